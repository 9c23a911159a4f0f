// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/Digest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  const char* algorithm;
  const char* digits;
};

// Test vectors from RFC 4231.
const Vector kKeyedVectors[] = {
    {"ShortKey224", "Jefe", "what do ya want for nothing?", "sha224",
     "a30e01098bc6dbbf45690f3a7e9e6d0f8bbea2a39e6148008fd05e44"},
    {"ShortKey256", "Jefe", "what do ya want for nothing?", "sha256",
     "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
    {"ShortKey384", "Jefe", "what do ya want for nothing?", "sha384",
     "af45d2e376484031617f78d2b58a6b1b9c7ef464f5a01b47e42ec3736322445e"
     "8e2240ca5e69e2c78b3239ecfab21649"},
    {"ShortKey512", "Jefe", "what do ya want for nothing?", "sha512",
     "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
     "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737"},
    {"KeyOf20Bytes256", std::string(20, '\x0b'), "Hi There", "sha256",
     "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
    {"KeyBeyondABlock256", std::string(131, '\xaa'),
     "Test Using Larger Than Block-Size Key - Hash Key First", "sha256",
     "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
};

// Test vectors that were published with the algorithms.
const Vector kPlainVectors[] = {
    {"Md5", "", "abc", "md5", "900150983cd24fb0d6963f7d28e17f72"},
    {"Sha1", "", "abc", "sha1", "a9993e364706816aba3e25717850c26c9cd0d89d"},
    {"Sha224", "", "abc", "sha224", "23097d223405d8228642a477bda255b32aadbce4bda0b3f7e36c9da7"},
    {"Sha256", "", "abc", "sha256",
     "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {"Sha384", "", "abc", "sha384",
     "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed"
     "8086072ba1e7cc2358baeca134c825a7"},
    {"Sha512", "", "abc", "sha512",
     "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
     "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
};

class DigestVectorTest : public ::testing::TestWithParam<Vector> {};

TEST_P(DigestVectorTest, MakesThePublishedChecksum) {
  const ScopedTempDir folder;
  const Vector& vector = GetParam();
  const FileDigest digest = ComputeFileDigest(folder.Write("data", vector.data), vector.algorithm,
                                              vector.key.empty() ? nullptr : &vector.key);
  EXPECT_EQ(digest.digits, vector.digits);
  EXPECT_EQ(digest.fileSize, static_cast<long>(vector.data.size()));
}

INSTANTIATE_TEST_SUITE_P(Rfc4231, DigestVectorTest, ::testing::ValuesIn(kKeyedVectors),
                         [](const auto& vector) { return vector.param.name; });
INSTANTIATE_TEST_SUITE_P(Standards, DigestVectorTest, ::testing::ValuesIn(kPlainVectors),
                         [](const auto& vector) { return vector.param.name; });

class DigestSizeTest : public ::testing::TestWithParam<std::size_t> {};

TEST_P(DigestSizeTest, AgreesWithOpenssl) {
  const ScopedTempDir folder;
  std::string data;
  for (std::size_t i = 0; i < GetParam(); ++i) {
    data += static_cast<char>(i * 7 + i / 256);
  }
  const std::string path = folder.Write("data", data);
  const std::string key = "a key";
  for (const std::string algorithm : {"md5", "sha1", "sha224", "sha256", "sha384", "sha512"}) {
    const auto expected = [&](const std::string& options) {
      return Witness("openssl dgst -" + algorithm + options + " -r " + path + " | cut -d' ' -f1");
    };
    EXPECT_EQ(ComputeFileDigest(path, algorithm, nullptr).digits + "\n", expected("")) << algorithm;
    const FileDigest keyed = ComputeFileDigest(path, algorithm, &key);
    EXPECT_EQ(keyed.digits + "\n", expected(" -hmac 'a key'")) << algorithm;
    EXPECT_EQ(keyed.fileSize, static_cast<long>(GetParam()));
  }
}

// Sizes around those of the algorithms' blocks and of the buffer.
INSTANTIATE_TEST_SUITE_P(Sizes, DigestSizeTest,
                         ::testing::Values(0, 1, 55, 56, 63, 64, 65, 111, 112, 127, 128, 131071,
                                           131072, 131073, 300000));

TEST(DigestTest, AKeyMayContainEveryByte) {
  const ScopedTempDir folder;
  std::string key;
  std::string digits;
  for (int byte = 0; byte < 256; ++byte) {
    key += static_cast<char>(byte);
    const char* const hex = "0123456789abcdef";
    digits += hex[byte / 16];
    digits += hex[byte % 16];
  }
  const std::string path = folder.Write("data", "text");
  EXPECT_EQ(ComputeFileDigest(path, "sha1", &key).digits + "\n",
            Witness("openssl dgst -sha1 -mac HMAC -macopt hexkey:" + digits + " -r " + path +
                    " | cut -d' ' -f1"));
}

TEST(DigestTest, AnEmptyKeyIsAKey) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("data", "text");
  const std::string key;
  EXPECT_NE(ComputeFileDigest(path, "sha256", &key).digits,
            ComputeFileDigest(path, "sha256", nullptr).digits);
}

TEST(DigestTest, RejectsUnknownAlgorithms) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("data", "");
  for (const std::string algorithm : {"", "SHA256", "sha3_256", "md4", "sha"}) {
    EXPECT_THAT([&] { ComputeFileDigest(path, algorithm, nullptr); },
                ThrowsMessage<KestrelException>("There is no checksum with the name " + algorithm));
  }
}

}  // namespace
}  // namespace Kestrel::Host
