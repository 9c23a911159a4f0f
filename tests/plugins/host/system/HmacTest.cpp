// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Hmac.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "kestrel/KestrelException.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using Testing::Witness;

struct Vector {
  const char* name;
  std::string key;
  std::string data;
  long bits;
  const char* digits;
};

// The published vectors of RFC 4231.
const Vector kVectors[] = {
    {"ShortKey256", "Jefe", "what do ya want for nothing?", 256,
     "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
    {"ShortKey384", "Jefe", "what do ya want for nothing?", 384,
     "af45d2e376484031617f78d2b58a6b1b9c7ef464f5a01b47e42ec3736322445e"
     "8e2240ca5e69e2c78b3239ecfab21649"},
    {"ShortKey512", "Jefe", "what do ya want for nothing?", 512,
     "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
     "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737"},
    {"KeyOf20Bytes256", std::string(20, '\x0b'), "Hi There", 256,
     "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
    {"KeyBeyondABlock256", std::string(131, '\xaa'),
     "Test Using Larger Than Block-Size Key - Hash Key First", 256,
     "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
};

class HmacVectorTest : public ::testing::TestWithParam<Vector> {};

TEST_P(HmacVectorTest, MakesThePublishedChecksum) {
  const ScopedTempDir folder;
  const Vector& vector = GetParam();
  const auto hmac = ComputeFileHmac(folder.Write("data", vector.data), vector.key, vector.bits);
  EXPECT_EQ(hmac.digits, vector.digits);
  EXPECT_EQ(hmac.fileSize, static_cast<long>(vector.data.size()));
}

INSTANTIATE_TEST_SUITE_P(Rfc4231, HmacVectorTest, ::testing::ValuesIn(kVectors),
                         [](const auto& vector) { return vector.param.name; });

TEST(HmacTest, AgreesWithOpensslAtEverySize) {
  const ScopedTempDir folder;
  for (const std::size_t size : {0, 1, 63, 64, 65, 127, 128, 65535, 65536, 65537, 300000}) {
    std::string data;
    for (std::size_t i = 0; i < size; ++i) {
      data += static_cast<char>(i * 7 + i / 256);
    }
    const std::string path = folder.Write("data", data);
    for (const long bits : {256, 384, 512}) {
      const std::string expected = Witness("openssl dgst -sha" + std::to_string(bits) +
                                           " -hmac 'a key' -r " + path + " | cut -d' ' -f1");
      const auto hmac = ComputeFileHmac(path, "a key", bits);
      EXPECT_EQ(hmac.digits + "\n", expected) << size;
      EXPECT_EQ(hmac.fileSize, static_cast<long>(size));
    }
  }
}

TEST(HmacTest, RefusesWhatCannotBeReadToAnEnd) {
  const ScopedTempDir folder;
  const std::string pipe = folder.GetPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {pipe, folder.GetPath(), std::string("/dev/zero")}) {
    EXPECT_THAT([&] { ComputeFileHmac(path, "k", 256); },
                ThrowsMessage<KestrelException>("Unable to read " + path + ": Not a regular file"));
  }
  EXPECT_THAT([&] { ComputeFileHmac(folder.GetPath("absent"), "k", 256); },
              ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath("absent") +
                                              ": No such file or directory"));
}

TEST(HmacTest, KnowsThreeLengthsOnly) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("data", "");
  for (const long bits : {0, 255, 1024}) {
    EXPECT_THAT([&] { ComputeFileHmac(path, "k", bits); },
                ThrowsMessage<KestrelException>("There is no checksum of " + std::to_string(bits) +
                                                " bits"));
  }
}

}  // namespace
}  // namespace Kestrel::Host
