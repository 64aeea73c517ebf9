#include "server/com/arguments.h"

#include <algorithm>
#include <exception>

#include "server/com/values.h"

namespace vellum250::com {

namespace {

// How many arguments there are with those left out between positional and named ones. The new
// value of a property is the last.
size_t CountOf(const DISPPARAMS& given) {
  size_t count = given.cArgs - given.cNamedArgs;
  bool puts = false;
  for (UINT i = 0; i < given.cNamedArgs; ++i) {
    const DISPID id = given.rgdispidNamedArgs[i];
    if (id == DISPID_PROPERTYPUT) {
      puts = true;
    } else if (id >= 0) {
      count = std::max(count, static_cast<size_t>(id) + 1);
    }
  }
  return count + (puts ? 1 : 0);
}

const DISPPARAMS& Checked(const MemberInfo& member, const DISPPARAMS& given) {
  const auto refuse = [&] {
    throw WrongNumberOfArguments(u"a named argument that " + member.name + u" does not have");
  };
  if (given.cNamedArgs > given.cArgs) refuse();
  for (UINT i = 0; i < given.cNamedArgs; ++i) {
    const DISPID id = given.rgdispidNamedArgs[i];
    if (id == DISPID_PROPERTYPUT) continue;
    if (id < 0 || static_cast<size_t>(id) >= member.parameters.size()) refuse();
  }
  return given;
}

}  // namespace

CallArguments::CallArguments(const MemberInfo& member, const DISPPARAMS& given)
    : member_(member), given_(Checked(member, given)), values_(CountOf(given), Missing{}) {
  // From the last to the first: positional arguments before named ones.
  for (UINT i = given.cArgs; i-- > 0;) {
    const size_t index = IndexOf(i);
    Variant& value = values_[index];
    if (i < given.cNamedArgs && !value.IsMissing()) {
      throw WrongNumberOfArguments(NameOf(index) + u" is given twice");
    }
    try {
      if (IsTextReference(index) && !CanTakeText(given.rgvarg[i])) {
        throw TypeMismatch(u"a variable that takes no text");
      }
      value = ToVariant(given.rgvarg[i]);
    } catch (const Failure& failure) {
      throw WithDetail(failure, NameOf(index));
    }
  }
}

void CallArguments::WriteBack() {
  std::exception_ptr failed;
  for (UINT i = 0; i < given_.cArgs; ++i) {
    const VARIANT& argument = given_.rgvarg[i];
    if ((argument.vt & VT_BYREF) == 0) continue;
    const size_t index = IndexOf(i);
    // Those of a property go to a default member, whose passing is not known here.
    if (member_.kind == MemberKind::Method && index < member_.parameters.size() &&
        member_.parameters[index].passing != Passing::ByReference) {
      continue;
    }
    try {
      com::WriteBack(argument, values_[index]);
    } catch (const Failure& failure) {
      failed = std::make_exception_ptr(WithDetail(failure, NameOf(index)));
    }
  }
  if (failed) std::rethrow_exception(failed);
}

// Named arguments come first; the positional ones follow, the last one first.
size_t CallArguments::IndexOf(size_t i) const {
  if (i >= given_.cNamedArgs) return given_.cArgs - 1 - i;
  const DISPID id = given_.rgdispidNamedArgs[i];
  return id == DISPID_PROPERTYPUT ? values_.size() - 1 : static_cast<size_t>(id);
}

// What could not be written back is refused before the member has done its work.
bool CallArguments::IsTextReference(size_t index) const {
  if (member_.kind != MemberKind::Method || index >= member_.parameters.size()) return false;
  const ParameterInfo& parameter = member_.parameters[index];
  return parameter.passing == Passing::ByReference && parameter.type == ScriptType::Text;
}

Text CallArguments::NameOf(size_t index) const {
  const auto& parameters = member_.parameters;
  return (index < parameters.size() ? parameters[index].name : NumberText(int64_t(index) + 1)) +
         u" of " + member_.name;
}

}  // namespace vellum250::com
