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
                                       .String("File", "The path of the file, as given.")
                                       .Int("Size", "Its size in bytes.")
                                       .String("Algorithm", "The algorithm of the checksum.")
                                       .String("Checksum", "The checksum in hexadecimal digits.");
  return shape;
}

class SystemFileChecksum final : public ListCommand {
 public:
  SystemFileChecksum()
      : ListCommand("Compute keyed checksums (HMAC) of files.", Shape,
                    "The checksums, in the order of the given files.") {
    ShowColumns("Checksum,File");
    AddExample("--file=/etc/hostname --key", "Compute a checksum; the key is typed without echo");
    AddExample("--file=/etc/hostname --bits=512 --key", "Compute a longer checksum");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("file", CallSpec::StringList, "The path of a file; can be repeated.")
        .Short("f")
        .Required()
        .AddTo(spec);
    Parameter("key", CallSpec::String, "The secret key.")
        .Short("k")
        .Required()
        .Secret()
        .Matching(".+")  // An empty key would be accepted by mistake.
        .AddTo(spec);
    Parameter("bits", CallSpec::Int,
              "The length of the checksum in bits, one of %ENUM%; the default is 256.")
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
