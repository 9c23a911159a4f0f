#include "kestrel/autocli/Util.h"

#include "autocli/FieldStyle.h"
#include "autocli/FitText.h"
#include "autocli/TextWriter.h"

namespace Kestrel::AutoCli {

std::string AutoCli_FormatField(const std::string& typeName, const std::string& fieldName,
                                std::shared_ptr<MetaObj::MetaObject> value,
                                FormatParameters& params) {
  const bool isStyled = value != nullptr && FieldStyle::IsUsedBy(params);
  const FieldStyle style = isStyled ? FieldStyle(typeName, fieldName, params) : FieldStyle();
  return style.MakeText(value.get());
}

void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                       bool skipFirstIndent, std::ostream& out, bool endLine, char wrapChar,
                       bool splitLines) {
  TextWriter writer(out);
  FitText(text, {indent, width, skipFirstIndent, endLine, wrapChar, splitLines}, writer);
  writer.HandOn();
}

}  // namespace Kestrel::AutoCli
