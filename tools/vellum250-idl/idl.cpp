#include <map>
#include <string_view>

#include "vellum250-idl/library.h"

namespace vellum250::idltool {
namespace {

// The compiler's own definitions, found by name; spelt out so that no other type library is needed.
constexpr std::string_view kPrelude =
    "typedef short VARIANT_BOOL;\n"
    "typedef double DATE;\n"
    "typedef wchar_t *BSTR;\n"
    "typedef struct VARIANT { unsigned short vt; } VARIANT;\n"
    "[object, local, uuid(00000000-0000-0000-C000-000000000046)]\n"
    "interface IUnknown { };\n"
    "[object, local, uuid(00020400-0000-0000-C000-000000000046)]\n"
    "interface IDispatch : IUnknown { };\n";

std::string_view TypeName(ScriptType type) {
  switch (type) {
    case ScriptType::None:
      return "void";
    case ScriptType::Boolean:
      return "VARIANT_BOOL";
    case ScriptType::Byte:
      return "unsigned char";
    case ScriptType::Int16:
      return "short";
    case ScriptType::Int32:
      return "long";
    case ScriptType::Double:
      return "double";
    case ScriptType::Date:
      return "DATE";
    case ScriptType::Text:
      return "BSTR";
    case ScriptType::Variant:
      return "VARIANT";
    case ScriptType::Object:
      return "IDispatch*";
  }
  return {};
}

// A type library holds one spelling of a name for all its uses, whichever comes first. Chosen here
// so that classes prevail over members and members over parameters.
class Spellings {
 public:
  explicit Spellings(const Library& library) {
    for (const Class& published : library.classes) Add(FromUtf8(published.Name()));
    for (const Class& published : library.classes) {
      for (const MemberInfo& member : published.table->Members()) Add(member.name);
    }
    for (const Class& published : library.classes) {
      for (const MemberInfo& member : published.table->Members()) {
        for (const ParameterInfo& parameter : member.parameters) Add(parameter.name);
      }
    }
  }

  std::string Of(TextView name) const { return ToUtf8(spellings_.at(ToAsciiLower(name))); }

  // One line for each name that has another spelling.
  const std::string& Notes() const { return notes_; }

 private:
  void Add(TextView name) {
    const auto [spelling, isNew] = spellings_.emplace(ToAsciiLower(name), name);
    if (isNew || spelling->second == name) return;
    std::string note = "// " + ToUtf8(name) + " stands as " + ToUtf8(spelling->second) + ".\n";
    if (notes_.find(note) == std::string::npos) notes_ += note;
  }

  std::map<Text, Text> spellings_;
  std::string notes_;
};

// An id without its braces.
std::string Bare(const std::string& id) { return id.substr(1, id.size() - 2); }

std::string Quoted(TextView text) {
  std::string quoted = "\"";
  for (const char c : ToUtf8(text)) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// The value that an optional parameter counts as when it is left out, in the language.
std::string DefaultValue(const ParameterInfo& parameter) {
  const Variant& value = parameter.defaultValue;
  if (parameter.type == ScriptType::Text) return Quoted(ToText(value));
  if (parameter.type == ScriptType::Boolean) return ToBoolean(value) ? "-1" : "0";
  return ToUtf8(ToText(value));
}

// widl writes no fraction, and no default of a parameter by reference. Nothing is lost: the
// component itself supplies what a caller leaves out, the zero value included.
bool CanWriteDefault(const ParameterInfo& parameter) {
  return parameter.passing == Passing::ByValue && parameter.type != ScriptType::Double;
}

void AppendParameter(std::string& out, const ParameterInfo& parameter, const Spellings& spellings) {
  out += parameter.passing == Passing::ByReference ? "[in, out" : "[in";
  std::string remark;
  if (parameter.optional) {
    out += ", optional";
    if (!parameter.defaultValue.IsEmpty()) {
      const std::string value = DefaultValue(parameter);
      if (CanWriteDefault(parameter)) {
        out += ", defaultvalue(" + value + ")";
      } else {
        remark = " /* = " + value + " */";
      }
    }
  }
  out += "] ";
  out += TypeName(parameter.type);
  if (parameter.passing != Passing::ByValue) out += '*';
  out += ' ' + spellings.Of(parameter.name) + remark;
}

// One function of a member: a method, or a property's access with its attribute.
void AppendFunction(std::string& out, const MemberInfo& member, std::string_view access,
                    const Spellings& spellings) {
  const bool isPut = access.starts_with("propput");
  const bool takesParameters = isPut || member.kind == MemberKind::Method;
  const bool isEnumerator = member.role == MemberRole::Enumerator;
  out += "      [id(" + std::to_string(member.dispatchId) + ')';
  if (isEnumerator) out += ", restricted";
  if (!access.empty()) (out += ", ") += access;
  out += "] ";
  out += isPut ? "void" : isEnumerator ? "IUnknown*" : TypeName(member.result);
  out += ' ' + spellings.Of(member.name) + '(';
  if (takesParameters) {
    std::string_view separator = "\n          ";
    for (const ParameterInfo& parameter : member.parameters) {
      out += separator;
      AppendParameter(out, parameter, spellings);
      separator = ",\n          ";
    }
  }
  out += ");\n";
}

void AppendMember(std::string& out, const MemberInfo& member, const Spellings& spellings) {
  if (member.kind == MemberKind::Method) return AppendFunction(out, member, {}, spellings);
  AppendFunction(out, member, "propget", spellings);
  if (member.kind == MemberKind::ReadOnlyProperty) return;
  const bool maybeObject =
      member.result == ScriptType::Object || member.result == ScriptType::Variant;
  if (member.result != ScriptType::Object) AppendFunction(out, member, "propput", spellings);
  if (maybeObject) AppendFunction(out, member, "propputref", spellings);
}

void AppendInterface(std::string& out, const Class& published, const Spellings& spellings) {
  const std::string name = spellings.Of(FromUtf8(published.Name()));
  out += "\n  [uuid(" + Bare(published.interfaceId) + "), hidden]\n";
  out += "  dispinterface _" + name + " {\n    properties:\n    methods:\n";
  for (const MemberInfo& member : published.table->Members()) {
    AppendMember(out, member, spellings);
  }
  out += "  };\n\n  [uuid(" + Bare(published.classId) + "), helpstring(\"" + published.ProgId() +
         "\")]\n";
  out += "  coclass " + name + " {\n    [default] dispinterface _" + name + ";\n  };\n";
}

}  // namespace

std::string WriteIdl(const Library& library) {
  const Spellings spellings(library);
  std::string out = "// Written by vellum250-idl from the class tables.\n";
  out += spellings.Notes();
  out += '\n';
  out += kPrelude;
  out += "\n[uuid(" + Bare(library.id) + "), version(" + library.interfaceVersion + "),\n";
  out += " helpstring(\"" + library.name + ' ' + library.version + "\")]\n";
  out += "library " + library.name + " {\n";
  // A member may return an object of a class that comes later.
  for (const Class& published : library.classes) {
    out += "  dispinterface _" + spellings.Of(FromUtf8(published.Name())) + ";\n";
  }
  for (const Class& published : library.classes) AppendInterface(out, published, spellings);
  out += "};\n";
  return out;
}

}  // namespace vellum250::idltool
