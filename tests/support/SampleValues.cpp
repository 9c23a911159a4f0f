// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/SampleValues.h"

#include <cstdint>
#include <sstream>
#include <vector>

namespace Kestrel::Testing {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

LyingValue::LyingValue(MetaType type, std::string text)
    : MetaObject(type), text_(std::move(text)) {}

std::string LyingValue::ToString() const { return text_; }

ActingValue::ActingValue(std::function<std::string()> act)
    : MetaObject(MetaType::String), act_(std::move(act)) {}

std::string ActingValue::ToString() const { return act_(); }

std::shared_ptr<MetaStruct> MakeRecord(
    std::initializer_list<std::pair<const char*, const char*>> fields) {
  auto row = MetaStruct::New("Row");
  for (const auto& [name, value] : fields) {
    row->SetField(name, value);
  }
  return row;
}

std::shared_ptr<MetaStruct> MakeDisk(const std::string& name, long size) {
  auto disk = MetaStruct::New("Disk");
  disk->SetField("Name", name);
  disk->SetField("Size", size);
  return disk;
}

std::shared_ptr<MetaList> MakeDisks(std::initializer_list<std::pair<const char*, long>> disks) {
  auto list = MetaList::New(MetaType::Struct, MakeDisk("", 0));
  for (const auto& [name, size] : disks) {
    list->Add(MakeDisk(name, size));
  }
  return list;
}

std::shared_ptr<MetaList> MakeList(std::initializer_list<std::shared_ptr<MetaStruct>> structures) {
  auto list = MetaList::New(MetaType::Struct, *structures.begin());
  for (const auto& structure : structures) {
    list->Add(structure);
  }
  return list;
}

namespace {

struct Mount {
  const char* device;
  const char* path;
  bool isReadOnly;
  long free;
  long used;
  std::vector<std::string> options;
  const char* note;
};

std::shared_ptr<MetaStruct> MakeMount(const Mount& mount) {
  const auto usage = MetaStruct::New("Usage");
  usage->SetField("Free", mount.free);
  usage->SetField("Used", mount.used);
  auto structure = MetaStruct::New("Mount");
  structure->SetField("Device", mount.device);
  structure->SetField("Path", mount.path);
  structure->SetField("Read Only", mount.isReadOnly);
  structure->SetField("Usage", usage);
  structure->SetField("Options", mount.options);
  structure->SetField("Note", mount.note);
  return structure;
}

}  // namespace

std::shared_ptr<MetaList> MakeMounts() {
  const auto root = MakeMount({"/dev/sda1",
                               "/",
                               false,
                               5120,
                               15360,
                               {"rw", "relatime"},
                               "The root of the tree, which every other mount hangs below."});
  return MakeList(
      {root, MakeMount({"tmpfs", "/run", false, -1, 0, {}, ""}),
       MakeMount({"/dev/mapper/vault-archive",
                  "/srv/archive and more",
                  true,
                  9223372036854775807,
                  20,
                  {"ro"},
                  "A note of two lines, the second one longer:\n"
                  "averyveryverylongwordwithoutanyblankthatneverfitsanywhere and  two blanks "})});
}

std::shared_ptr<MetaStruct> MakeNested(int depth) {
  std::shared_ptr<MetaStruct> structure;
  for (int i = 0; i < depth; ++i) {
    auto outer = MetaStruct::New("Node");
    outer->SetField("a", i);
    if (structure != nullptr) {
      outer->SetField("child", structure);
    }
    structure = std::move(outer);
  }
  return structure;
}

std::shared_ptr<CallSpec::Output> MakeOutput(const std::shared_ptr<MetaObject>& root) {
  auto output = CallSpec::Output::New();
  output->SetRootObject(root);
  return output;
}

AutoCli::FormatParameters MakeParameters(
    std::initializer_list<std::pair<const char*, const char*>> parameters) {
  AutoCli::FormatParameters params;
  for (const auto& [key, value] : parameters) {
    params.SetParameter(key, value);
  }
  return params;
}

std::string FormatToText(AutoCli::Formatter& formatter, const std::shared_ptr<MetaObject>& root,
                         std::initializer_list<std::pair<const char*, const char*>> parameters,
                         int width) {
  AutoCli::FormatParameters params = MakeParameters(parameters);
  AutoCli::DisplayContext display;
  display.width = static_cast<std::uint16_t>(width);
  std::ostringstream out;
  formatter.Format(MakeOutput(root), params, display, out);
  return out.str();
}

}  // namespace Kestrel::Testing
