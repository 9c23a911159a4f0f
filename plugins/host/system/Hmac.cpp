// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Hmac.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <nettle/hmac.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/HexDigits.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kReadSize = 1 << 16;

[[noreturn]] void ThrowReadError(const std::string& path, const char* reason) {
  throw KestrelException("Unable to read " + path + ": " + reason);
}

// Rejects everything that may have no end, such as a pipe. O_NONBLOCK prevents open from waiting
// for the other end of a pipe.
FileDescriptor OpenRegularFile(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat status = {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    ThrowReadError(path, std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    ThrowReadError(path, "Not a regular file");
  }
  return file;
}

// The state contains traces of the key, so it is erased.
class HmacState {
 public:
  HmacState(const std::string& key, long bits) : bits_(bits) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(key.data());
    if (bits_ == 256) {
      ::hmac_sha256_set_key(&state_.sha256, key.size(), bytes);
    } else if (bits_ == 384) {
      ::hmac_sha384_set_key(&state_.sha512, key.size(), bytes);
    } else {
      ::hmac_sha512_set_key(&state_.sha512, key.size(), bytes);
    }
  }
  HmacState(const HmacState&) = delete;
  HmacState& operator=(const HmacState&) = delete;
  ~HmacState() { ::explicit_bzero(&state_, sizeof(state_)); }

  void Update(const std::uint8_t* bytes, std::size_t size) {
    if (bits_ == 256) {
      ::hmac_sha256_update(&state_.sha256, size, bytes);
    } else {
      ::hmac_sha512_update(&state_.sha512, size, bytes);
    }
  }

  std::string GetDigits() {
    std::array<std::uint8_t, SHA512_DIGEST_SIZE> digest = {};
    const std::size_t size = static_cast<std::size_t>(bits_) / 8;
    if (bits_ == 256) {
      ::hmac_sha256_digest(&state_.sha256, size, digest.data());
    } else if (bits_ == 384) {
      ::hmac_sha384_digest(&state_.sha512, size, digest.data());
    } else {
      ::hmac_sha512_digest(&state_.sha512, size, digest.data());
    }
    std::string digits;
    for (std::size_t i = 0; i < size; ++i) {
      AppendHexDigits(digest[i], digits);
    }
    return digits;
  }

 private:
  long bits_;
  union {
    hmac_sha256_ctx sha256;
    hmac_sha512_ctx sha512;  // SHA-384 uses it, too
  } state_;
};

}  // namespace

FileHmac ComputeFileHmac(const std::string& path, const std::string& key, long bits) {
  if (bits != 256 && bits != 384 && bits != 512) {
    throw KestrelException("There is no checksum of " + std::to_string(bits) + " bits");
  }
  const FileDescriptor file = OpenRegularFile(path);
  HmacState state(key, bits);
  std::vector<std::uint8_t> buffer(kReadSize);
  FileHmac hmac;
  ssize_t count = 0;
  while ((count = file.Read(buffer.data(), buffer.size())) > 0) {
    state.Update(buffer.data(), static_cast<std::size_t>(count));
    hmac.fileSize += count;
  }
  if (count < 0) {
    ThrowReadError(path, std::strerror(errno));
  }
  hmac.digits = state.GetDigits();
  return hmac;
}

}  // namespace Kestrel::Host
