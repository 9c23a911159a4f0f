// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KeyedChecksum.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <nettle/hmac.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Kestrel::Host {
namespace {

constexpr std::size_t kReadSize = 1 << 16;

[[noreturn]] void ThrowReadError(const std::string& path, int error) {
  throw KestrelException("Unable to read " + path + ": " + std::strerror(error));
}

// A file that can be read to its end; anything else, as a pipe that nobody fills, is refused
// before it is read.
class RegularFile {
 public:
  explicit RegularFile(const std::string& path)
      : path_(path), number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
    if (number_ < 0) {
      ThrowReadError(path_, errno);
    }
  }
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;
  ~RegularFile() { ::close(number_); }

  void CheckKind() const {
    struct stat status = {};
    if (::fstat(number_, &status) != 0) {
      ThrowReadError(path_, errno);
    }
    if (!S_ISREG(status.st_mode)) {
      throw KestrelException("Unable to read " + path_ + ": Not a regular file");
    }
  }

  std::size_t Read(std::vector<std::uint8_t>& buffer) const {
    ssize_t count = 0;
    do {
      count = ::read(number_, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
      ThrowReadError(path_, errno);
    }
    return static_cast<std::size_t>(count);
  }

 private:
  std::string path_;
  int number_;
};

// One member of the library's family of functions, with its state, which holds traces of the key.
class Hmac {
 public:
  Hmac(const std::string& key, long bits) : bits_(bits) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(key.data());
    if (bits_ == 256) {
      ::hmac_sha256_set_key(&state_.sha256, key.size(), bytes);
    } else if (bits_ == 384) {
      ::hmac_sha384_set_key(&state_.sha512, key.size(), bytes);
    } else {
      ::hmac_sha512_set_key(&state_.sha512, key.size(), bytes);
    }
  }
  Hmac(const Hmac&) = delete;
  Hmac& operator=(const Hmac&) = delete;
  ~Hmac() { ::explicit_bzero(&state_, sizeof(state_)); }

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
    return Hexadecimal(digest.data(), size);
  }

 private:
  static std::string Hexadecimal(const std::uint8_t* bytes, std::size_t size) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
      text += kDigits[bytes[i] >> 4];
      text += kDigits[bytes[i] & 0xf];
    }
    return text;
  }

  long bits_;
  union {
    hmac_sha256_ctx sha256;
    hmac_sha512_ctx sha512;
  } state_;
};

}  // namespace

KeyedChecksum ChecksumFile(const std::string& path, const std::string& key, long bits) {
  if (bits != 256 && bits != 384 && bits != 512) {
    throw KestrelException("There is no checksum of " + std::to_string(bits) + " bits");
  }
  const RegularFile file(path);
  file.CheckKind();
  Hmac hmac(key, bits);
  std::vector<std::uint8_t> buffer(kReadSize);
  KeyedChecksum checksum;
  while (const std::size_t count = file.Read(buffer)) {
    hmac.Update(buffer.data(), count);
    checksum.size += static_cast<long>(count);
  }
  checksum.digits = hmac.GetDigits();
  return checksum;
}

}  // namespace Kestrel::Host
