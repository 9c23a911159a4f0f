#include "kestrel/autocli/JsonFormatter.h"

#include <string_view>

#include "autocli/EscapeTable.h"
#include "autocli/Indent.h"
#include "autocli/TextWriter.h"
#include "autocli/ValueView.h"
#include "autocli/ValueWalk.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

constexpr long kRootLevel = -1;

constexpr EscapeTable MakeJsonEscapes() {
  constexpr char kDigits[] = "0123456789abcdef";
  EscapeTable table;
  for (int byte = 0; byte < 256; ++byte) {
    // Byte by byte, also within a character of several bytes: readers rely on it.
    if (byte < 32 || byte >= 127) {
      const char text[] = {'\\', 'u', '0', '0', kDigits[byte / 16], kDigits[byte % 16], '\0'};
      table.Set(static_cast<unsigned char>(byte), text);
    }
  }
  return table.Set('"', "\\\"")
      .Set('\\', "\\\\")
      .Set('/', "\\/")
      .Set('\b', "\\b")
      .Set('\t', "\\t")
      .Set('\n', "\\n")
      .Set('\f', "\\f")
      .Set('\r', "\\r");
}

constexpr EscapeTable kJsonEscapes = MakeJsonEscapes();

class JsonPrinter {
 public:
  static constexpr long kFieldStep = 2;
  static constexpr long kElementStep = 3;

  // The name stands as it is: no byte of a name is escaped.
  static std::string FieldPrefix(const std::string& name, bool isFirst, long level) {
    return (isFirst ? "" : ",\n") + std::string(IndentOf(level) + kIndentStep, ' ') + '"' + name +
           "\": ";
  }

  explicit JsonPrinter(TextWriter& out) : out_(out) {}

  void Bool(bool value, long /*level*/) { out_.Append(value ? "true" : "false"); }
  void Int(long value, long /*level*/) { out_.AppendInt(value); }

  void String(const std::string& value, long /*level*/) {
    out_.Append('"');
    out_.AppendEscaped(value, kJsonEscapes);
    out_.Append('"');
  }

  void Misread(const MetaObject* value) {
    out_.Append(MisreadText(value, "Unknown data type"));
    out_.Append('\n');
  }

  void BeginStruct(const MetaStruct& /*record*/, long level) { Open(level, "{\n"); }
  void EndStruct(bool isEmpty, long level) { Close(isEmpty, level, '}'); }

  void BeginList(const MetaList& /*list*/, long level) { Open(level, "[\n"); }
  void BeginElement(bool isFirst, long level) {
    out_.Append(isFirst ? "" : ", \n");
    out_.Repeat(' ', IndentOf(level));
  }

  void EndList(bool isEmpty, long level) { Close(isEmpty, level, ']'); }

 private:
  void Open(long level, std::string_view bracket) {
    out_.Append('\n');
    out_.Repeat(' ', IndentOf(level));
    out_.Append(bracket);
  }

  void Close(bool isEmpty, long level, char bracket) {
    out_.Append(isEmpty ? "" : "\n");
    out_.Repeat(' ', IndentOf(level));
    out_.Append(bracket);
  }

  TextWriter& out_;
};

void Print(const MetaObject* value, TextWriter& out, long level) {
  JsonPrinter printer(out);
  ValueWalk<JsonPrinter>(printer, out).Run(value, level);
}

}  // namespace

JsonFormatter::JsonFormatter() : Formatter("json") { description = "Print the output as JSON."; }

JsonFormatter::~JsonFormatter() = default;

void JsonFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                           FormatParameters& /*parameters*/, DisplayContext& /*display*/,
                           std::ostream& out) {
  TextWriter writer(out);
  Print(output->GetRootObject().get(), writer, kRootLevel);
  writer.Append('\n');
  writer.Finish();
}

void JsonFormatter::Format(std::shared_ptr<MetaObject> value, std::ostream& out, int level) {
  TextWriter writer(out);
  Print(value.get(), writer, level);
  writer.Finish();
}

}  // namespace Kestrel::AutoCli
