#include "vellum250-idl/library.h"

namespace vellum250::idltool {
namespace {

// As the script language calls it.
std::string_view TypeName(ScriptType type) {
  switch (type) {
    case ScriptType::None:
      return "";
    case ScriptType::Boolean:
      return "Boolean";
    case ScriptType::Byte:
      return "Byte";
    case ScriptType::Int16:
      return "Integer";
    case ScriptType::Int32:
      return "Long";
    case ScriptType::Double:
      return "Double";
    case ScriptType::Date:
      return "Date";
    case ScriptType::Text:
      return "String";
    case ScriptType::Variant:
      return "Variant";
    case ScriptType::Object:
      return "Object";
  }
  return {};
}

std::string DefaultOf(const ParameterInfo& parameter) {
  if (!parameter.optional) return "required";
  const Variant& value = parameter.defaultValue;
  if (value.IsEmpty()) return "optional";
  const std::string text = ToUtf8(ToText(value));
  return "optional, " + (value.IsText() ? "`\"" + text + "\"`" : "`" + text + "`");
}

void AppendMethod(std::string& out, const MemberInfo& member) {
  out += '(';
  for (const ParameterInfo& parameter : member.parameters) {
    if (out.back() != '(') out += ", ";
    out += parameter.optional ? '[' + ToUtf8(parameter.name) + ']' : ToUtf8(parameter.name);
  }
  out += ")`\n";
  if (member.parameters.empty()) return;
  out += "\n| Parameter | Type | Given |\n|---|---|---|\n";
  for (const ParameterInfo& parameter : member.parameters) {
    out += "| `" + ToUtf8(parameter.name) + "` | ";
    out += TypeName(parameter.type);
    out += " | " + DefaultOf(parameter);
    if (parameter.passing == Passing::ByReference) out += ", comes back changed";
    out += " |\n";
  }
}

void AppendMember(std::string& out, const MemberInfo& member) {
  out += "\n### " + ToUtf8(member.name) + "\n\n";
  if (member.role == MemberRole::Default) out += "The default member. ";
  if (member.role == MemberRole::Enumerator) out += "What `For Each` walks. ";
  const std::string_view type = TypeName(member.result);
  if (member.kind != MemberKind::Method) {
    (out += type) += member.kind == MemberKind::Property ? " property, read and write.\n"
                                                         : " property, read only.\n";
    return;
  }
  if (!type.empty()) (out += type) += " result. ";
  out += '`' + ToUtf8(member.name);
  AppendMethod(out, member);
}

}  // namespace

std::string WriteReference(const Library& library) {
  std::string out =
      "# The interface of " + library.name +
      "\n\n"
      "<!-- Written by `vellum250-idl --markdown` from the class tables. -->\n\n"
      "The classes in the order of the interface, each with its members in theirs. An "
      "optional parameter\nthat is left out counts as the value shown, otherwise as the "
      "zero value of its type: an empty text,\n0, False, Nothing.\n\n";
  for (const Class& published : library.classes) {
    out += "- [" + published.Name() + "](#" + ToUtf8(ToAsciiLower(FromUtf8(published.Name()))) +
           "): `" + published.ProgId() + "`\n";
  }
  for (const Class& published : library.classes) {
    out += "\n## " + published.Name() + '\n';
    for (const MemberInfo& member : published.table->Members()) AppendMember(out, member);
  }
  return out;
}

}  // namespace vellum250::idltool
