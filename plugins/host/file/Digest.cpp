// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/Digest.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <nettle/hmac.h>
#include <nettle/nettle-meta.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "plugins/host/file/RegularFile.h"
#include "plugins/host/frame/HexDigits.h"
#include "plugins/host/frame/LoadedLibrary.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kReadSize = 1 << 17;

struct Libnettle : LoadedLibrary {
  Libnettle() : LoadedLibrary(KESTREL_HOST_LIBNETTLE) {}
  KESTREL_LOADED(nettle_md5);
  KESTREL_LOADED(nettle_sha1);
  KESTREL_LOADED(nettle_sha224);
  KESTREL_LOADED(nettle_sha256);
  KESTREL_LOADED(nettle_sha384);
  KESTREL_LOADED(nettle_sha512);
  KESTREL_LOADED(nettle_hmac_set_key);
  KESTREL_LOADED(nettle_hmac_digest);
};

const Libnettle& Library() {
  static const Libnettle library;
  return library;
}

const nettle_hash& FindHash(const std::string& algorithm) {
  static const std::array<const nettle_hash*, 6> hashes = {
      Library().nettle_md5,    Library().nettle_sha1,   Library().nettle_sha224,
      Library().nettle_sha256, Library().nettle_sha384, Library().nettle_sha512};
  const auto hash = std::find_if(hashes.begin(), hashes.end(), [&](const nettle_hash* candidate) {
    return algorithm == candidate->name;
  });
  if (hash == hashes.end()) {
    throw KestrelException("There is no checksum with the name " + algorithm);
  }
  return **hash;
}

// The state of a computation. It may contain traces of a key, so the destructor erases it.
class DigestState {
 public:
  DigestState(const nettle_hash& hash, const std::string* key)
      : hash_(hash), hasKey_(key != nullptr), state_(hash.context_size) {
    if (!hasKey_) {
      hash_.init(state_.data());
      return;
    }
    outer_.resize(hash.context_size);
    inner_.resize(hash.context_size);
    Library().nettle_hmac_set_key(outer_.data(), inner_.data(), state_.data(), &hash_, key->size(),
                                  reinterpret_cast<const std::uint8_t*>(key->data()));
  }
  DigestState(const DigestState&) = delete;
  DigestState& operator=(const DigestState&) = delete;
  ~DigestState() {
    for (std::vector<std::uint8_t>* const part : {&state_, &outer_, &inner_}) {
      if (!part->empty()) {
        ::explicit_bzero(part->data(), part->size());
      }
    }
  }

  // The key is part of the state, so data is added in the same way with and without a key.
  void Update(const std::uint8_t* bytes, std::size_t size) {
    hash_.update(state_.data(), size, bytes);
  }

  std::string GetDigits() {
    std::vector<std::uint8_t> digest(hash_.digest_size);
    if (hasKey_) {
      Library().nettle_hmac_digest(outer_.data(), inner_.data(), state_.data(), &hash_,
                                   digest.size(), digest.data());
    } else {
      hash_.digest(state_.data(), digest.size(), digest.data());
    }
    std::string digits;
    for (const std::uint8_t byte : digest) {
      AppendHexDigits(byte, digits);
    }
    return digits;
  }

 private:
  const nettle_hash& hash_;
  bool hasKey_;
  std::vector<std::uint8_t> state_;
  std::vector<std::uint8_t> outer_;
  std::vector<std::uint8_t> inner_;
};

}  // namespace

FileDigest ComputeFileDigest(const std::string& path, const std::string& algorithm,
                             const std::string* key) {
  DigestState state(FindHash(algorithm), key);
  const FileDescriptor file = OpenRegularFile(path);
  std::vector<std::uint8_t> buffer(kReadSize);
  FileDigest digest;
  ssize_t count = 0;
  while ((count = file.Read(buffer.data(), buffer.size())) > 0) {
    state.Update(buffer.data(), static_cast<std::size_t>(count));
    digest.fileSize += count;
  }
  if (count < 0) {
    ThrowReadError(path, std::strerror(errno));
  }
  digest.digits = state.GetDigits();
  return digest;
}

}  // namespace Kestrel::Host
