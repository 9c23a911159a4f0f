// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include <string>
#include <vector>

#include "plugins/host/file/Digest.h"
#include "plugins/host/file/FileCommands.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"

namespace Kestrel::Host {
namespace {

constexpr char kDefaultAlgorithm[] = "sha256";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("FileChecksum")
          .String("Path", "The path of the file, as given.")
          .Size("Size", "Its length.")
          .String("Algorithm", "The algorithm, such as sha256; with a key, hmac-sha256.")
          .String("Checksum", "The checksum in hexadecimal digits.");
  return shape;
}

class FileChecksum final : public ListCommand {
 public:
  FileChecksum()
      : ListCommand("Compute checksums of files.", Shape,
                    "The checksums, in the order of the given files.") {
    ShowColumns("Checksum,Path", {{"wrap-last", "true"}});
    AddMetaData("complete:file", "file");
    AddExample("--file /etc/passwd", "Compute a checksum");
    AddExample("--algorithm md5 --file /etc/passwd --file /etc/group", "Choose the algorithm");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("file", CallSpec::StringList, "The path of a file; can be repeated.")
        .Short("f")
        .Required()
        .AddTo(spec);
    Parameter("algorithm", CallSpec::String, "The algorithm, one of %ENUM%; the default is sha256.")
        .Short("a")
        .OneOf({{"md5", ""},
                {"sha1", ""},
                {"sha224", ""},
                {"sha256", ""},
                {"sha384", ""},
                {"sha512", ""}})
        .AddTo(spec);
    Parameter("key", CallSpec::String,
              "A secret key, for the checksum that only those who know it can compute (HMAC).")
        .Short("k")
        .Secret()
        .Matching(".+")  // Otherwise, a key left empty by mistake would be accepted.
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const std::string algorithm =
        input.HasParameter("algorithm") ? input.GetParameter("algorithm") : kDefaultAlgorithm;
    const std::string* const key = input.HasParameter("key") ? &input.GetParameter("key") : nullptr;
    std::vector<std::string> files;
    input.GetParameterList("file", files);
    for (const std::string& file : files) {
      try {
        rows.Add(ToStruct(file, algorithm, key));
      } catch (const KestrelException& error) {
        // The other files may have errors to report, too.
        output.AddErrorMessage(error.what());
      }
    }
  }

  static std::shared_ptr<MetaObj::MetaStruct> ToStruct(const std::string& file,
                                                       const std::string& algorithm,
                                                       const std::string* key) {
    const FileDigest digest = ComputeFileDigest(file, algorithm, key);
    auto row = Shape().NewStruct();
    row->SetField("Path", SanitizedText(file));
    SetSize(*row, "Size", digest.fileSize);
    row->SetField("Algorithm", (key == nullptr ? "" : "hmac-") + algorithm);
    row->SetField("Checksum", digest.digits);
    return row;
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewFileChecksum() { return std::make_shared<FileChecksum>(); }

}  // namespace Kestrel::Host
