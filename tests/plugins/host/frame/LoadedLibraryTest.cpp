// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/LoadedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <netinet/in.h>
#include <strings.h>

#include <string>

namespace Kestrel::Host {
namespace {

using testing::HasSubstr;

struct Libc : LoadedLibrary {
  Libc() : LoadedLibrary("libc.so.6") {}
  KESTREL_LOADED(ffs);
  KESTREL_LOADED(in6addr_loopback);
};

// A function that the library does not have.
extern "C" int KestrelHasNoSuchFunction();

struct LibcWithMore : LoadedLibrary {
  LibcWithMore() : LoadedLibrary("libc.so.6") {}
  decltype(&KestrelHasNoSuchFunction) missing =
      Find<decltype(KestrelHasNoSuchFunction)>("KestrelHasNoSuchFunction");
};

template <typename Library>
std::string MessageOf() {
  try {
    const Library library;
    return "no exception";
  } catch (const KestrelException& error) {
    return error.what();
  }
}

TEST(LoadedLibraryTest, FindsFunctionsAndObjects) {
  const Libc library;
  EXPECT_EQ(library.ffs(8), 4);
  EXPECT_TRUE(IN6_IS_ADDR_LOOPBACK(library.in6addr_loopback));
}

TEST(LoadedLibraryTest, SaysWhichLibraryIsMissing) {
  struct Missing : LoadedLibrary {
    Missing() : LoadedLibrary("libkestrel-has-none.so.7") {}
  };
  EXPECT_THAT(MessageOf<Missing>(),
              HasSubstr("Unable to load a library: libkestrel-has-none.so.7"));
}

TEST(LoadedLibraryTest, SaysWhichFunctionIsMissing) {
  EXPECT_THAT(MessageOf<LibcWithMore>(), HasSubstr("KestrelHasNoSuchFunction"));
}

}  // namespace
}  // namespace Kestrel::Host
