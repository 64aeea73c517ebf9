#include "automation/class_table.h"

#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "automation/keyed_collection.h"

namespace vellum250 {
namespace {

int32_t liveProbes = 0;

// A published class with every kind of parameter.
class Probe final : public ScriptObject<Probe> {
 public:
  Probe() { ++liveProbes; }
  ~Probe() override { --liveProbes; }

  static const ClassTable& Table() {
    static const ClassTable table =
        Describe<Probe>(u"Probe")
            .Property<&Probe::Note>(u"Note")
            .Property<&Probe::Level, &Probe::SetLevel>(u"Level")
            .ReadOnlyProperty<&Probe::Level>(u"Fixed")
            .Method<&Probe::Double>(u"Double", {u"number", Opt(u"text", u"preset")})
            .Method<&Probe::Describe250>(u"Describe", {Opt(u"absent"), Opt(u"flag", true)})
            .Method<&Probe::Raise>(u"Raise", {u"changed"})
            .Method<&Probe::Me>(u"Me");
    return table;
  }

  Text Note;
  int32_t Level() const { return level_; }
  void SetLevel(int32_t level) { level_ = level; }
  Text Double(int16_t& number, const Text& text) {
    number = static_cast<int16_t>(number * 2);
    return text;
  }
  Text Describe250(const std::optional<Text>& absent, bool flag) {
    return (absent ? *absent : u"absent") + Text(flag ? u"+" : u"-");
  }
  void Raise(Text& changed) {
    changed = u"before";
    throw SubscriptOutOfRange();
  }
  Ref<Probe> Me() { return Ref<Probe>(this); }

 private:
  int32_t level_ = 1;
};

constexpr InvokeKind kCall = InvokeKind::Method | InvokeKind::Get;

class ClassTableTest : public testing::Test {
 protected:
  Variant Call(TextView member, std::vector<Variant> arguments, InvokeKind kind = kCall) {
    arguments_ = std::move(arguments);
    return probe_->Invoke(member, kind, arguments_);
  }
  // The failure's number and description.
  std::pair<int32_t, Text> Fail(TextView member, std::vector<Variant> arguments,
                                InvokeKind kind = kCall) {
    try {
      Call(member, std::move(arguments), kind);
    } catch (const Failure& failure) {
      return {failure.Number(), failure.Description()};
    }
    return {};
  }
  ObjectRef probe_ = MakeObject<Probe>();
  std::vector<Variant> arguments_;
};

TEST_F(ClassTableTest, ConvertsCallsAndWritesBackByReferenceOnly) {
  EXPECT_EQ(Call(u"dOUBLE", {u"21", 5}), Variant(u"5"));
  EXPECT_EQ(arguments_[0], Variant(int16_t{42}));
  EXPECT_EQ(arguments_[1], Variant(5)) << "not written back";
}

TEST_F(ClassTableTest, ArgumentsLeftOutTakeTheirDefaults) {
  EXPECT_EQ(Call(u"Double", {1}), Variant(u"preset"));
  EXPECT_EQ(Call(u"Double", {1, Missing{}}), Variant(u"preset"));
  EXPECT_EQ(Call(u"Double", {Variant(), Variant()}), Variant(u"")) << "Empty is no absence";
  EXPECT_EQ(Call(u"Describe", {}), Variant(u"absent+"));
  EXPECT_EQ(Call(u"Describe", {u"", false}), Variant(u"-"));
  EXPECT_EQ(Call(u"Describe", {Missing{}, 0}), Variant(u"absent-"));
}

TEST_F(ClassTableTest, FailuresNameMemberAndParameter) {
  const struct {
    int32_t number;
    TextView member;
    std::vector<Variant> arguments;
    TextView named;
  } cases[] = {
      {438, u"Missing", {}, u"Probe.Missing"},
      {438, u"", {}, u"Probe."},
      {449, u"Double", {}, u"number of Probe.Double"},
      {449, u"Double", {Missing{}, u"x"}, u"number of Probe.Double"},
      {450, u"Double", {1, u"x", 2}, u"Probe.Double takes 2, not 3"},
      {450, u"Level", {1}, u"Probe.Level"},
      {13, u"Double", {u"abc"}, u"number of Double"},
      {13, u"Double", {probe_}, u"number of Double"},
      {94, u"Double", {1, Null{}}, u"text of Double"},
      {6, u"Double", {70000}, u"number of Double"},
  };
  for (const auto& c : cases) {
    const auto [number, description] = Fail(c.member, c.arguments);
    EXPECT_EQ(number, c.number) << ToUtf8(c.member);
    EXPECT_NE(description.find(c.named), Text::npos) << ToUtf8(description);
  }
  EXPECT_EQ(Fail(u"Fixed", {1}, InvokeKind::Put).first, 438);
  EXPECT_EQ(Fail(u"Double", {1}, InvokeKind::Put).first, 438);
  EXPECT_EQ(Fail(u"Note", {}, InvokeKind::Put).first, 449);
}

TEST_F(ClassTableTest, WritesBackAlsoWhenTheMemberRaises) {
  EXPECT_EQ(Fail(u"Raise", {u"x"}).first, 9);
  EXPECT_EQ(arguments_[0], Variant(u"before"));
}

TEST_F(ClassTableTest, PropertiesReadAndWrite) {
  Call(u"Note", {7}, InvokeKind::Put);
  EXPECT_EQ(Call(u"note", {}, InvokeKind::Get), Variant(u"7"));
  EXPECT_EQ(Call(u"note", {}), Variant(u"7")) << "reading does not take the value away";
  Call(u"Level", {u"3"}, InvokeKind::Put);
  EXPECT_EQ(Call(u"Fixed", {}), Variant(3));
}

TEST_F(ClassTableTest, ObjectsKeepIdentityAndAreReleased) {
  {
    const Variant me = Call(u"Me", {});
    EXPECT_EQ(me.As<ObjectRef>(), probe_);
    EXPECT_EQ(liveProbes, 1);
  }
  probe_ = nullptr;
  arguments_.clear();
  EXPECT_EQ(liveProbes, 0);
}

TEST(ClassTables, DescribeTypesAndPassingInOrder) {
  const auto members = Probe::Table().Members();
  ASSERT_EQ(members.size(), 7u);
  EXPECT_EQ(members[3].name, u"Double");
  EXPECT_EQ(members[3].result, ScriptType::Text);
  EXPECT_EQ(members[3].parameters[0].type, ScriptType::Int16);
  EXPECT_EQ(members[3].parameters[0].passing, Passing::ByReference);
  EXPECT_EQ(members[3].parameters[1].passing, Passing::ByReferenceUnchanged);
  EXPECT_EQ(members[4].parameters[1].passing, Passing::ByValue);
  EXPECT_EQ(members[6].result, ScriptType::Object);
}

// A collection within a collection: both can be indexed and walked.
class Shelf final : public ScriptObject<Shelf> {
 public:
  static const ClassTable& Table() {
    static const ClassTable table = Describe<Shelf>(u"Shelf")
                                        .ReadOnlyProperty<&Shelf::Count>(u"Count")
                                        .ReadOnlyProperty<&Shelf::NewEnum>(u"NewEnum")
                                        .AsEnumerator()
                                        .Method<&Shelf::Item>(u"Item", {u"index"})
                                        .AsDefault()
                                        .ReadOnlyProperty<&Shelf::Inner>(u"Inner");
    return table;
  }
  int32_t Count() { return 3; }
  ObjectRef NewEnum() { return nullptr; }
  int32_t Item(int32_t index) { return index * 10; }
  ObjectRef Inner() { return MakeObject<Shelf>(); }
};

TEST(ClassTables, DispatchIdsFollowTheInterfaceButForMembersWithARole) {
  const ClassTable& table = Shelf::Table();
  const std::pair<TextView, int32_t> ids[] = {{u"Count", 1}, {u"newenum", -4}, {u"_NewEnum", -4},
                                              {u"Item", 0},  {u"", 0},         {u"Inner", 4}};
  for (const auto& [name, id] : ids) {
    ASSERT_NE(table.Find(name), nullptr) << ToUtf8(name);
    EXPECT_EQ(table.Find(name)->dispatchId, id) << ToUtf8(name);
    EXPECT_EQ(table.FindById(id), table.Find(name)) << ToUtf8(name);
  }
  for (const int32_t none : {2, 3, 5, -1}) EXPECT_EQ(table.FindById(none), nullptr) << none;
}

// An object whose value is that of its default member.
class Amount final : public ScriptObject<Amount> {
 public:
  static const ClassTable& Table() {
    static const ClassTable table =
        Describe<Amount>(u"Amount").Property<&Amount::Value>(u"Value").AsDefault();
    return table;
  }
  Variant Value;
};

TEST(ClassTables, AnObjectIsWorthItsDefaultMemberWhereAValueIsNeeded) {
  const auto amount = MakeObject<Amount>();
  const auto holder = MakeObject<Amount>();
  holder->Value = amount;
  for (const ObjectRef& object : {ObjectRef(amount), ObjectRef(holder)}) {
    amount->Value = u"12";
    EXPECT_EQ(ToText(object), u"12");
    EXPECT_EQ(ToInt32(object), 12);
    amount->Value = u"31/12/2004";
    EXPECT_EQ(ToDate(object), Date{38352});
  }
  amount->Value = holder;  // each holds the other
  EXPECT_THROW(ToText(holder), Failure);
  amount->Value = MakeObject<Shelf>();
  EXPECT_THROW(ToText(amount), Failure) << "its default member wants an index";
}

TEST(ClassTables, ArgumentsOfAPropertyReadGoToTheDefaultMemberOfItsValue) {
  const ObjectRef shelf = MakeObject<Shelf>();
  Variant index[] = {Variant(4)};
  EXPECT_EQ(shelf->Invoke(u"Inner", kCall, index), Variant(40));
  EXPECT_EQ(shelf->Invoke({}, kCall, index), Variant(40));
  try {
    shelf->Invoke(u"Count", kCall, index);
    ADD_FAILURE() << "a number has no default member";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 450);
  }
}

TEST(Dictionary, KeepsOrderAndTellsKeysApartByCase) {
  const auto dictionary = MakeObject<Dictionary>();
  dictionary->Add(u"b", 1);
  dictionary->Add(u"B", 2);
  dictionary->Add(u"a", Null{});
  EXPECT_THROW(dictionary->Add(u"b", 3), Failure);
  dictionary->Remove(u"b");
  EXPECT_EQ(dictionary->Entries()[0].first, u"B");
  EXPECT_EQ(*dictionary->Find(u"a"), Variant(Null{})) << "positions follow a removal";
  EXPECT_TRUE(dictionary->Item(u"zzz").IsEmpty());
  EXPECT_EQ(dictionary->Count(), 2) << "reading an absent key adds nothing";
  EXPECT_THROW(dictionary->Remove(u"b"), Failure);
}

TEST(Dictionary, FindsEveryOneOfManyKeys) {
  const auto dictionary = MakeObject<Dictionary>();
  const auto key = [](int i) { return Text(static_cast<size_t>(i % 9), u'k') + NumberText(i); };
  for (int i = 0; i < 5000; ++i) dictionary->Add(key(i), i);
  for (int i = 0; i < 5000; i += 1000) dictionary->Remove(key(i));
  dictionary->Set(key(7), u"replaced");
  for (int i = 0; i < 5000; ++i) {
    const Variant* value = dictionary->Find(key(i));
    ASSERT_EQ(value == nullptr, i % 1000 == 0) << i;
    if (i % 1000 != 0) {
      ASSERT_EQ(*value, i == 7 ? Variant(u"replaced") : Variant(i));
    }
  }
  EXPECT_EQ(dictionary->Find(Text{u'k', 0}), nullptr);
  dictionary->RemoveAll();
  EXPECT_EQ(dictionary->Find(key(8)), nullptr);
}

TEST(KeyedCollection, PositionsAndKeysFailByTheirOwnNumbers) {
  KeyedCollection<int> collection;
  collection.Add(10, u"Key");
  collection.Add(20);
  EXPECT_EQ(collection.Item(u"KEY"), 10);
  EXPECT_EQ(collection.Item(2), 20);
  EXPECT_EQ(collection.Find(u"none"), nullptr);
  const auto number = [](auto body) {
    try {
      body();
    } catch (const Failure& failure) {
      return failure.Number();
    }
    return 0;
  };
  EXPECT_EQ(number([&] { collection.Item(u"none"); }), 5);
  EXPECT_EQ(number([&] { collection.Item(0); }), 9);
  EXPECT_EQ(number([&] { collection.Item(3); }), 9);
  EXPECT_EQ(number([&] { collection.Add(30, u"key"); }), 457);
  collection.Remove(u"key");
  EXPECT_EQ(collection.Item(1), 20);
}

}  // namespace
}  // namespace vellum250
