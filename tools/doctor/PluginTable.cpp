// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/doctor/PluginTable.h"

#include <algorithm>
#include <string>

#include "autocli/text/TerminalText.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Doctor {

using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// File names and the loader's messages may contain any bytes, even escape sequences.
std::shared_ptr<MetaString> Text(const std::string& text) {
  return MetaString::NewUtf8WithEscapes(AutoCli::WithVisibleControls(OneLine(text)));
}

std::shared_ptr<MetaStruct> MakeFolder(const Access& access) {
  const auto folder = MetaStruct::New("PluginFolder");
  folder->SetField("Path", Text(access.path), "The folder, with links followed.");
  folder->SetField("Owner", Text(access.owner), "The user that it belongs to.");
  folder->SetField("Mode", Text(access.mode), "The rights, as octal digits.");
  return folder;
}

std::shared_ptr<MetaStruct> MakeDuplicate(const DuplicatePath& duplicate) {
  const auto path = MetaStruct::New("DuplicatePath");
  path->SetField("Path", Text(duplicate.path), "The path of a command.");
  path->SetField("File", Text(duplicate.file), "The plug-in that has it already.");
  return path;
}

template <typename Element, typename Make>
std::shared_ptr<MetaList> MakeList(const std::vector<Element>& elements, Make make) {
  const auto list = MetaList::New(MetaType::Struct, make(Element()));
  for (const Element& element : elements) {
    list->Add(make(element));
  }
  return list;
}

std::string KindOf(const std::string& file) {
  return file.size() > 3 && file.compare(file.size() - 3, 3, ".so") == 0 ? "shared object"
                                                                         : "descriptor";
}

std::string Join(const std::vector<std::string>& reasons) {
  std::string text;
  for (const std::string& reason : reasons) {
    text += (text.empty() ? "" : "; ") + reason;
  }
  return text;
}

std::shared_ptr<MetaStruct> MakePlugin(const Diagnosis& plugin) {
  const Examination& examination = plugin.examination;
  const auto row = MetaStruct::New("Plugin");
  row->SetField("File", Text(plugin.file), "The file that the tool loads.");
  row->SetField("Kind", Text(KindOf(plugin.file)), "shared object or descriptor.");
  row->SetField("State", Text(WordOf(examination.state)),
                "loaded, faulty, refused, threw, crashed, ended or hung.");
  row->SetField("Reason", Text(Join(examination.reasons)), "What is wrong with it.");
  row->SetField("Commands", MetaInt::New(static_cast<long>(examination.commands.size())),
                "How many commands it adds.");
  row->SetField("Milliseconds", MetaInt::New(examination.milliseconds),
                "How long it takes to load it.");
  row->SetField("Owner", Text(plugin.access.file.owner), "The user that the file belongs to.");
  row->SetField("Mode", Text(plugin.access.file.mode), "The rights of the file, as octal digits.");
  row->SetField("Folders", MakeList(plugin.access.folders, MakeFolder),
                "The folders above the file, from the root folder on.");
  row->SetField("ABI", MetaInt::New(plugin.abi.value_or(0)),
                "The number of the plug-in interface that it was compiled for; 0 without one.");
  row->SetField("Duplicate Paths", MakeList(plugin.duplicates, MakeDuplicate),
                "The commands for which it is refused, because another plug-in has them.");
  return row;
}

}  // namespace

std::shared_ptr<MetaList> MakeTable(const std::vector<Diagnosis>& plugins) {
  return MakeList(plugins, MakePlugin);
}

AutoCli::FormatParameters MakeFormat(const std::string& formatter) {
  constexpr const char* kFields = "File,State,Commands,Milliseconds,Owner,Mode,ABI,Reason";
  AutoCli::FormatParameters format;
  format.SetFormatter(formatter.empty() ? "table" : formatter);
  if (format.GetFormatter() == "pretty") {
    format.SetParameter("fields", kFields);  // would restrict formats for programs, too
  } else {
    format.SetParameter("fields:Plugin", kFields);
    format.SetParameter("wrap-last", "true");
  }
  return format;
}

}  // namespace Kestrel::Doctor
