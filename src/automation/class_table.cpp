#include "automation/class_table.h"

namespace vellum250 {

ClassTable::ClassTable(Text name, std::vector<MemberInfo> members)
    : name_(std::move(name)), members_(std::move(members)) {
  byName_.reserve(members_.size() + 2);
  int32_t position = 0;
  for (MemberInfo& member : members_) {
    byName_.emplace(member.name, &member);
    member.dispatchId = ++position;
    if (member.role == MemberRole::Default) {
      member.dispatchId = kDefaultMemberId;
      byName_.emplace(u"", defaultMember_ = &member);
    } else if (member.role == MemberRole::Enumerator) {
      member.dispatchId = kEnumeratorId;
      byName_.emplace(u"_NewEnum", enumerator_ = &member);
    }
  }
}

// FNV-1a over the lower-cased code units.
size_t ClassTable::NameHash::operator()(TextView name) const {
  uint64_t hash = 14695981039346656037u;
  for (char16_t c : name) hash = (hash ^ AsciiLower(c)) * 1099511628211u;
  return hash;
}

const MemberInfo* ClassTable::Find(TextView name) const {
  auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second;
}

const MemberInfo* ClassTable::FindById(int32_t dispatchId) const {
  if (dispatchId == kDefaultMemberId) return defaultMember_;
  if (dispatchId == kEnumeratorId) return enumerator_;
  if (dispatchId < 1 || static_cast<size_t>(dispatchId) > members_.size()) return nullptr;
  const MemberInfo& member = members_[static_cast<size_t>(dispatchId) - 1];
  return member.role == MemberRole::Ordinary ? &member : nullptr;
}

Variant ClassTable::Call(Object& object, const MemberInfo& member, InvokeKind kind,
                         Arguments arguments) const {
  const auto describe = [&] { return name_ + u"." + member.name; };
  const bool put = Includes(kind, InvokeKind::Put | InvokeKind::PutRef);
  if (put && member.kind != MemberKind::Property) {
    throw NoSuchMember(describe() + u" cannot be assigned");
  }
  // A method called as a property read is a call all the same: scripts do not tell them apart.
  const bool reads = member.kind != MemberKind::Method && !put;
  const size_t parameterCount = reads ? 0 : member.parameters.size();
  if (reads && !arguments.empty()) {
    const Variant value = member.call(object, member, kind, {});
    const ObjectRef* held = value.If<ObjectRef>();
    if (held != nullptr && *held) return (*held)->Invoke({}, kind, arguments);
  }
  if (arguments.size() > parameterCount) {
    throw WrongNumberOfArguments(describe() + u" takes " + NumberText(parameterCount) + u", not " +
                                 NumberText(arguments.size()));
  }
  for (size_t i = 0; i < parameterCount; ++i) {
    if (!member.parameters[i].optional && (i >= arguments.size() || arguments[i].IsMissing())) {
      throw ArgumentNotOptional(member.parameters[i].name + u" of " + describe());
    }
  }
  return member.call(object, member, kind, arguments);
}

void class_table_detail::RaiseForParameter(const MemberInfo& member, size_t index) {
  try {
    throw;
  } catch (const Failure& failure) {
    throw WithDetail(failure, member.parameters[index].name + u" of " + member.name);
  }
}

}  // namespace vellum250
