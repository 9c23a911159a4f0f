// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Descriptor.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace Kestrel::Benchmarks {
namespace {

constexpr const char* kCommand = R"(
      <description>List what the store holds, those of one owner or all.</description>
      <meta-data>
        <meta-data-entry name="changes-host">false</meta-data-entry>
      </meta-data>
      <input-spec>
        <parameter name="owner" shortname="o" type="string-list" required="false">
          <description>List what belongs to one of these owners only; %REGEX%.</description>
          <constraint type="regex">
            <regex>[a-z][a-z0-9-]*</regex>
          </constraint>
        </parameter>
        <parameter name="state" shortname="s" type="string" required="true">
          <description>List volumes in this state only, one of %ENUM%.</description>
          <constraint type="stringenum">
            <enum>
              <enum-value value="online"/>
              <enum-value value="offline"/>
              <enum-value value="any"/>
            </enum>
          </constraint>
        </parameter>
        <parameter name="limit" type="int" required="false">
          <description>The most rows, from %MIN% to %MAX%.</description>
          <constraint type="range">
            <range min="1" max="1000"/>
          </constraint>
        </parameter>
      </input-spec>
      <output-spec>
        <list type="structure">
          <structure typeName="Volume">
            <field name="Name"><string/></field>
            <field name="Size"><int/></field>
            <field name="Enabled"><bool/></field>
            <field name="Path"><string/></field>
          </structure>
        </list>
      </output-spec>
      <format-parameters>
        <formatter>table</formatter>
        <format-parameter name="fields:Volume">Name,Size,Path</format-parameter>
        <format-parameter name="units:Volume.Size">KiB</format-parameter>
      </format-parameters>
      <execute>list-volumes --state='$val{state}'$if{owner, --owner=$list{owner,',',true}}</execute>
    </command>
)";

}  // namespace

std::string MakeDescriptor(const std::string& name) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<vexil-plugin>\n  <version>1.0.0</version>\n"
      "  <namespaces>\n    <namespace path=\"" +
      name +
      "\">\n      <description>Volumes.</description>\n    </namespace>\n  </namespaces>\n"
      "  <commands>\n";
  for (int i = 0; i < 10; ++i) {
    text += "    <command path=\"" + name + ".list" + std::to_string(i) + "\">" + kCommand;
  }
  return text + "  </commands>\n</vexil-plugin>\n";
}

DescriptorFolder::DescriptorFolder(std::int64_t count) {
  std::string path = std::filesystem::temp_directory_path() / "kestrel-XXXXXX";
  path_ = mkdtemp(path.data());
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string name = "store" + std::to_string(i);
    files_.push_back(path_ + "/" + name + ".xml");
    std::ofstream(files_.back()) << MakeDescriptor(name);
  }
}

DescriptorFolder::~DescriptorFolder() { std::filesystem::remove_all(path_); }

}  // namespace Kestrel::Benchmarks
