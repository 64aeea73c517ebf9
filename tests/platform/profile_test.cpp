#include "platform/profile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vellum250::platform {
namespace {

// A path of its own that is gone at the end.
class Profile : public testing::Test {
 protected:
  Profile() {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
  }
  ~Profile() override { std::filesystem::remove_all(folder_); }

  Text File() const { return (folder_ / "settings.ini").u16string(); }

  void Write(const std::string& bytes) const {
    std::ofstream(folder_ / "settings.ini", std::ios::binary) << bytes;
  }
  std::string Read() const {
    std::ifstream file(folder_ / "settings.ini", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  size_t FilesInFolder() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }

  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() /
      (std::string("vellum250_") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

struct Lookup {
  const char16_t* section;
  const char16_t* name;
  const char16_t* fallback;
  const char16_t* value;
};

TEST_F(Profile, FindsValues) {
  Write(
      "top=1\r\n;note=5\r\n[ Server ]\r\n  host = db one  \r\nhost=second\r\nbare\r\nempty=\r\n"
      "[server]\r\nother=3\r\n[Quotes] ; junk\r\ndouble=\" a b \"\r\nsingle='x'\r\nhalf=\"y\r\n"
      "one=\"\r\nmixed=\"z'\r\nnote=a ; b\r\n\ttab\t=\t1\t\r\nequals=a=b\r\n#hash=1\r\n"
      "[Unix]\nline=1\nlast=2\n[Latin]\r\nd\xE9j\xE0=\xA3 5\r\n[End]\r\nlast=no line end");
  const Lookup cases[] = {
      {u"server", u"HOST", u"", u"db one"},
      {u" Server ", u" host ", u"", u"db one"},
      {u"server", u"bare", u"none", u"none"},
      {u"server", u"empty", u"none", u""},
      {u"server", u"other", u"none", u"none"},
      {u"server", u"missing", u"none", u"none"},
      {u"server", u"missing", u"", u""},
      {u"server", u"missing", u" two  ", u" two"},
      {u"server", u"missing", u"'quoted'", u"quoted"},
      {u"server", u"", u"none", u"none"},
      {u"missing", u"host", u"none", u"none"},
      {u"", u"top", u"none", u"1"},
      {u"", u"host", u"none", u"none"},
      {u"", u"note", u"none", u"none"},
      {u"quotes", u"double", u"", u" a b "},
      {u"quotes", u"single", u"", u"x"},
      {u"quotes", u"half", u"", u"\"y"},
      {u"quotes", u"one", u"", u"\""},
      {u"quotes", u"mixed", u"", u"\"z'"},
      {u"quotes", u"note", u"", u"a ; b"},
      {u"quotes", u"tab", u"", u"1"},
      {u"quotes", u"equals", u"", u"a=b"},
      {u"quotes", u"equals=a", u"none", u"none"},
      {u"quotes", u"#hash", u"", u"1"},
      {u"unix", u"last", u"", u"2"},
      {u"latin", u"d\u00E9j\u00E0", u"", u"\u00A3 5"},
      {u"end", u"last", u"", u"no line end"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ToUtf8(ProfileValue(File(), c.section, c.name, c.fallback)), ToUtf8(c.value))
        << ToUtf8(c.section) << " " << ToUtf8(c.name);
  }
}

TEST_F(Profile, MakesChangesAndRemovesLines) {
  const struct {
    const char16_t* section;
    const char16_t* name;
    std::optional<TextView> value;
    const char* file;
  } steps[] = {
      {u"A", u"x", std::nullopt, ""},
      {u"A", u"x", u"1", "[A]\r\nx=1\r\n"},
      {u"B", u"y", u"  two words", "[A]\r\nx=1\r\n[B]\r\ny=two words\r\n"},
      {u"a", u"X", u"\u00A3 \u20AC \u0416", "[A]\r\nx=\xA3 \x80 ?\r\n[B]\r\ny=two words\r\n"},
      {u"A", u"z", u"", "[A]\r\nx=\xA3 \x80 ?\r\nz=\r\n[B]\r\ny=two words\r\n"},
      {u"A", u"x", u"'q'", "[A]\r\nx='q'\r\nz=\r\n[B]\r\ny=two words\r\n"},
      {u"A", u"nope", std::nullopt, "[A]\r\nx='q'\r\nz=\r\n[B]\r\ny=two words\r\n"},
      {u"Nope", u"x", std::nullopt, "[A]\r\nx='q'\r\nz=\r\n[B]\r\ny=two words\r\n"},
      {u"A", u"x", std::nullopt, "[A]\r\nz=\r\n[B]\r\ny=two words\r\n"},
      {u"", u"top", u"1", "top=1\r\n[A]\r\nz=\r\n[B]\r\ny=two words\r\n"},
  };
  for (const auto& step : steps) {
    EXPECT_TRUE(SetProfileValue(File(), step.section, step.name, step.value));
    EXPECT_EQ(Read(), step.file) << ToUtf8(step.section) << " " << ToUtf8(step.name);
  }
  EXPECT_TRUE(RemoveProfileSection(File(), u"Nope"));
  EXPECT_TRUE(RemoveProfileSection(File(), u"a"));
  EXPECT_EQ(Read(), "top=1\r\n[B]\r\ny=two words\r\n");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(Profile, ALongValueIsCutWhenItIsRead) {
  const Text value(5000, u'v');
  EXPECT_TRUE(SetProfileValue(File(), u"A", u"long", value));
  EXPECT_EQ(ProfileValue(File(), u"A", u"long", u""), value.substr(0, 2047));
  EXPECT_EQ(ProfileValue(File(), u"A", u"none", value), value.substr(0, 2047));
  EXPECT_EQ(Read().size(), 5000U + std::string("[A]\r\nlong=\r\n").size());
}

TEST_F(Profile, TextsEndAtAZero) {
  EXPECT_TRUE(
      SetProfileValue(File(), TextView(u"A\0B", 3), TextView(u"x\0y", 3), TextView(u"1\0002", 3)));
  EXPECT_EQ(Read(), "[A]\r\nx=1\r\n");
  EXPECT_EQ(ProfileValue(File(), u"A", u"x", u""), u"1");
}

TEST_F(Profile, TellsWhereNothingCanBeWritten) {
  const Text folder = folder_.u16string();
  for (const Text& file : {Text(), folder, folder + u"/missing/settings.ini"}) {
    EXPECT_FALSE(SetProfileValue(file, u"A", u"x", u"1")) << ToUtf8(file);
    EXPECT_EQ(ProfileValue(file, u"A", u"x", u"none"), u"none");
  }
  EXPECT_EQ(FilesInFolder(), 0U);
}

#ifndef _WIN32  // Wine writes the whole file anew, and threads do not wait for each other

TEST_F(Profile, LeavesOtherLinesAsTheyAre) {
  const struct {
    std::string before;
    std::string after;  // of n=1 into A
  } cases[] = {
      {"; c\n\n[A]\n k = v \n\n\n[B]\n", "; c\n\n[A]\n k = v \nn=1\n\n\n[B]\n"},
      {"[A]\r\n N = old ; c\r\n\r\n", "[A]\r\nN=1\r\n\r\n"},
      {"[A]", "[A]\r\nn=1\r\n"},
      {"[B]\nk=2", "[B]\nk=2\n[A]\nn=1\n"},
      {"[A]\nn=1", "[A]\nn=1\n"},
      {std::string("\x81\x8D\0[A]\n", 7), std::string("\x81\x8D\0[A]\n[A]\nn=1\n", 15)},
      {std::string("\xFF\xFE[\0A\0]\0\n\0", 10),
       std::string("\xFF\xFE[\0A\0]\0\n\0n\0=\0001\0\n\0", 18)},
  };
  for (const auto& c : cases) {
    Write(c.before);
    EXPECT_TRUE(SetProfileValue(File(), u"A", u"n", u"1"));
    EXPECT_EQ(Read(), c.after);
  }
}

TEST_F(Profile, KeepsLinksAndModes) {
  Write("[A]\n");
  std::filesystem::permissions(folder_ / "settings.ini", std::filesystem::perms::owner_all);
  std::filesystem::create_symlink("settings.ini", folder_ / "link.ini");
  EXPECT_TRUE(SetProfileValue((folder_ / "link.ini").u16string(), u"A", u"n", u"1"));
  EXPECT_EQ(Read(), "[A]\nn=1\n");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.ini"));
  EXPECT_EQ(std::filesystem::status(folder_ / "settings.ini").permissions(),
            std::filesystem::perms::owner_all);
  EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(Profile, LosesNothingOfSeveralWriters) {
  constexpr int kWriters = 4;
  constexpr int kValues = 25;
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([&, writer] {
      for (int i = 0; i < kValues; ++i) {
        EXPECT_TRUE(SetProfileValue(File(), u"W" + NumberText(writer), u"v" + NumberText(i),
                                    NumberText(i)));
      }
    });
  }
  for (auto& writer : writers) writer.join();
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int i = 0; i < kValues; ++i) {
      EXPECT_EQ(ProfileValue(File(), u"W" + NumberText(writer), u"v" + NumberText(i), u"lost"),
                NumberText(i));
    }
  }
  EXPECT_EQ(FilesInFolder(), 1U);
}

#endif

}  // namespace
}  // namespace vellum250::platform
