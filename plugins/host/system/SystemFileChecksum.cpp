// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/Hmac.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kDefaultBits = 256;

const StructShape& Shape() {
  static const StructShape shape = StructShape("FileChecksum")
                                       .String("File", "The path of the file as it was given.")
                                       .Int("Size", "Its size in bytes.")
                                       .String("Algorithm", "How the checksum was made.")
                                       .String("Checksum", "The checksum in hexadecimal digits.");
  return shape;
}

class SystemFileChecksum final : public ListCommand {
 public:
  SystemFileChecksum()
      : ListCommand("Make checksums of files that only someone with the key can make.", Shape,
                    "The checksums in the order of the files given.") {
    ShowColumns("Checksum,File");
    AddExample("--file=/etc/hostname --key", "Make the checksum with a key that is typed unseen");
    AddExample("--file=/etc/hostname --bits=512 --key", "Make a longer one");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("file", CallSpec::StringList, "The path of a file; give it once for each file.")
        .Short("f")
        .Required()
        .AddTo(spec);
    Parameter("key", CallSpec::String, "The secret key.")
        .Short("k")
        .Required()
        .Secret()
        .Matching(".+")  // A key that nobody typed would still make a checksum.
        .AddTo(spec);
    Parameter("bits", CallSpec::Int,
              "The length of the checksum, one of %ENUM%; 256 without this parameter.")
        .Short("b")
        .OneOf({256, 384, 512})
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    std::vector<std::string> files;
    input.GetParameterList("file", files);
    const std::int64_t bits =
        input.HasParameter("bits") ? input.GetParameterInt("bits") : kDefaultBits;
    for (const std::string& file : files) {
      const FileHmac hmac = ComputeFileHmac(file, input.GetParameter("key"), bits);
      auto row = Shape().NewStruct();
      row->SetField("File", SanitizedText(file));
      row->SetField("Size", hmac.fileSize);
      row->SetField("Algorithm", "HMAC-SHA" + std::to_string(bits));
      row->SetField("Checksum", hmac.digits);
      rows.Add(row);
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemFileChecksum() {
  return std::make_shared<SystemFileChecksum>();
}

}  // namespace Kestrel::Host
