// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/UnknownWord.h"

#include <gmock/gmock.h>

#include <list>
#include <memory>
#include <optional>
#include <string>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/SampleCommands.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using Vexil::ReadUnknownWord;

// Returns the library's message about `path` in a tree with the command "storage mount list".
std::string GetMessage(std::list<std::string> path) {
  const AutoCli::Dispatcher dispatcher;
  RegisterAt(dispatcher.GetRootNamespace(), {"storage", "mount", "list"},
             MakeAnsweringCommand("done"));
  try {
    dispatcher.GetRootNamespace()->ResolveNode(path);
  } catch (const KestrelException& error) {
    return error.what();
  }
  return "no message";
}

TEST(UnknownWordTest, IsReadFromTheMessagesOfTheLibrary) {
  EXPECT_THAT(ReadUnknownWord(GetMessage({"storag", "mount"})), Optional(ElementsAre("storag")));
  EXPECT_THAT(ReadUnknownWord(GetMessage({"storage", "mout", "list"})),
              Optional(ElementsAre("storage", "mout")));
  EXPECT_THAT(ReadUnknownWord(GetMessage({"storage", "mount", "list", "all"})),
              Optional(ElementsAre("storage", "mount", "list", "all")));
}

TEST(UnknownWordTest, MayContainAnything) {
  EXPECT_THAT(ReadUnknownWord(GetMessage({""})), Optional(IsEmpty()));
  EXPECT_THAT(ReadUnknownWord(GetMessage({"storage mout"})),
              Optional(ElementsAre("storage", "mout")));
  EXPECT_THAT(ReadUnknownWord(GetMessage({"storage", "x' in namespace y"})),
              Optional(ElementsAre("storage", "x'", "in", "namespace", "y")));
}

TEST(UnknownWordTest, IsNotReadFromOtherMessages) {
  for (const char* message :
       {"", "no fuel", "Unable to find a command or namespace with the name 'a'",
        "Unable to find a namespace or command with the name 'a' on the command 'b'",
        "Error: Unable to find a command or namespace with the name 'a' in namespace b"}) {
    EXPECT_EQ(std::nullopt, ReadUnknownWord(message)) << message;
  }
}

}  // namespace

}  // namespace Kestrel::Testing
