// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The child process writes each value followed by a NUL, and a full stop at the end. Without the
// full stop, the result is incomplete and is ignored.

#include "tools/complete/DataValues.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/FindNode.h"
#include "vexil/Words.h"

namespace Kestrel::Complete {

using AutoCli::Command;
using AutoCli::CommandInput;
using AutoCli::CommandOutput;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr char kMark = '.';

// More than a person can choose from. The values of a larger result are not offered.
constexpr std::size_t kMaxBytes = 16 << 20;

struct Source {
  Vexil::Words path;
  std::shared_ptr<Command> command;
  std::string field;
};

bool NeedsParameter(Command& command) {
  const auto& parameters = command.GetInputSpec()->GetParameters();
  return std::any_of(parameters.begin(), parameters.end(),
                     [](const auto& parameter) { return parameter->IsRequired(); });
}

bool ChangesSomething(const Command& command) {
  const auto found = command.GetMetaData().find("changes");
  return found != command.GetMetaData().end() && found->second == "true";
}

// Returns the command and the field that `text` names. The command is null if it cannot be used.
Source FindSource(const AutoCli::Dispatcher& dispatcher, const std::string& text) {
  const std::size_t end = std::min(text.find(' '), text.size());
  Source source;
  source.path = Vexil::SplitWords(text.substr(0, end), ".");
  source.field = text.substr(std::min(end + 1, text.size()));
  source.command = std::dynamic_pointer_cast<Command>(
      Vexil::FindNode(dispatcher.GetRootNamespace(), source.path));
  if (source.command != nullptr &&
      (ChangesSomething(*source.command) || NeedsParameter(*source.command))) {
    source.command = nullptr;
  }
  return source;
}

void AddScalars(const std::shared_ptr<MetaObject>& value, std::string& text) {
  if (value->GetType() == MetaType::List) {
    for (const std::shared_ptr<MetaObject>& element :
         std::static_pointer_cast<MetaList>(value)->GetObjects()) {
      AddScalars(element, text);
    }
  } else if (value->GetType() != MetaType::Struct) {
    text += value->ToString();
    text += '\0';
  }
}

void AddField(const std::shared_ptr<MetaObject>& value, const std::string& field,
              std::string& text) {
  if (value == nullptr || value->GetType() != MetaType::Struct) {
    return;
  }
  const auto structure = std::static_pointer_cast<MetaStruct>(value);
  if (structure->HasField(field)) {
    AddScalars(structure->GetField(field), text);
  }
}

// Returns the values of the field in a structure, or in each structure of a list.
std::string CollectField(const std::shared_ptr<MetaObject>& root, const std::string& field) {
  std::string text;
  if (root == nullptr || root->GetType() != MetaType::List) {
    AddField(root, field, text);
    return text;
  }
  for (const std::shared_ptr<MetaObject>& row :
       std::static_pointer_cast<MetaList>(root)->GetObjects()) {
    AddField(row, field, text);
  }
  return text;
}

// Removes relative and empty folders from PATH, because they would make the shell find programs in
// the current folder.
void KeepAbsoluteFolders() {
  const char* path = std::getenv("PATH");
  std::string folders;
  for (const std::string& folder : Vexil::SplitWords(path == nullptr ? "" : path, ":")) {
    if (folder.front() == '/') {
      folders += (folders.empty() ? "" : ":") + folder;
    }
  }
  setenv("PATH", folders.empty() ? "/usr/bin:/bin" : folders.c_str(), 1);
}

bool WriteAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) {
      return false;
    }
    done += count < 0 ? 0 : static_cast<std::size_t>(count);
  }
  return true;
}

bool RunCommand(const Source& source, int descriptor) {
  const auto input = CommandInput::New();
  input->SetCommandPath({source.path.begin(), source.path.end()});
  input->SetInputSpec(source.command->GetInputSpec());
  const auto output = CommandOutput::New();
  source.command->Execute(input, output);
  return !output->HasError() &&
         WriteAll(descriptor, CollectField(output->GetRootObject(), source.field) + kMark);
}

[[noreturn]] void RunInChild(const Source& source, int descriptor) {
  // The child gets its own process group, so that it can be killed with the processes that it
  // starts.
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  KeepAbsoluteFolders();
  try {
    const bool isDone = chdir("/") == 0 && RunCommand(source, descriptor);
    _exit(isDone ? EXIT_SUCCESS : EXIT_FAILURE);
  } catch (...) {
    _exit(EXIT_FAILURE);
  }
}

// Waits until there is data, or no more can come. Returns false at the deadline or after an error.
bool WaitForData(int descriptor, Deadline deadline) {
  pollfd request = {descriptor, POLLIN, 0};
  int result = -1;
  do {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      return false;
    }
    result = poll(&request, 1, static_cast<int>(left.count()));
  } while (result < 0 && errno == EINTR);
  return result > 0;
}

std::string ReadUntil(int descriptor, Deadline deadline) {
  std::string text;
  std::array<char, 65536> buffer = {};
  while (text.size() < kMaxBytes && WaitForData(descriptor, deadline)) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count <= 0) {
      break;
    }
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

std::vector<std::string> SplitValues(const std::string& text) {
  const bool isWhole =
      !text.empty() && text.back() == kMark && (text.size() == 1 || text[text.size() - 2] == '\0');
  return isWhole ? Vexil::SplitWords({text.data(), text.size() - 1}, {"\0", 1})
                 : std::vector<std::string>();
}

}  // namespace

std::vector<std::string> ReadDataValues(const AutoCli::Dispatcher& dispatcher,
                                        const std::string& source, Deadline deadline) {
  const Source found = FindSource(dispatcher, source);
  std::array<int, 2> ends = {};
  if (found.command == nullptr || pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {};
  }
  const pid_t child = fork();
  if (child == 0) {
    RunInChild(found, ends[1]);
  }
  close(ends[1]);
  std::string text;
  if (child > 0) {
    setpgid(child, child);
    text = ReadUntil(ends[0], deadline);
    kill(-child, SIGKILL);
    waitpid(child, nullptr, 0);
  }
  close(ends[0]);
  return SplitValues(text);
}

}  // namespace Kestrel::Complete
