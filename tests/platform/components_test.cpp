// Where components are and which version they have.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/class_registry.h"
#include "platform/file_version.h"

#ifdef _WIN32
#include "platform/windows/ole.h"
#else
#include <cstdlib>
#endif

namespace vellum250::platform {
namespace {

constexpr char kRoot[] = "vellum250.registry_test";

// Keys under the classes root, gone at the end.
#ifdef _WIN32
struct Classes {
  ~Classes() { RegDeleteTreeA(HKEY_CLASSES_ROOT, kRoot); }
  void Add(const std::string& key, const std::string& value) {
    RegSetKeyValueA(HKEY_CLASSES_ROOT, key.c_str(), "", REG_SZ, value.c_str(),
                    static_cast<DWORD>(value.size() + 1));
  }
};
#else
struct Classes {
  std::filesystem::path file = std::filesystem::temp_directory_path() / "vellum250_classes.ini";
  Classes() { setenv("VELLUM250_CLASSES", file.c_str(), 1); }
  ~Classes() {
    unsetenv("VELLUM250_CLASSES");
    std::filesystem::remove(file);
  }
  void Add(const std::string& key, const std::string& value) {
    std::ofstream(file, std::ios::binary | std::ios::app) << "[" << key << "]\n@=" << value << "\n";
  }
};
#endif

TEST(ClassRegistry, GivesTheDefaultValueOfAKey) {
  Classes classes;
  const std::string root = kRoot;
  const std::string longest(1023, 'x');
  classes.Add(root + "\\CLSID", "{6B1C}");
  classes.Add(root + "\\Path", "C:\\Caf\xE9 5\\a.dll");
  classes.Add(root + "\\Empty", "");
  classes.Add(root + "\\Longest", longest);
  classes.Add(root + "\\TooLong", longest + "x");
  const struct {
    const char16_t* key;
    Text value;
  } cases[] = {
      {u"CLSID", u"{6B1C}"}, {u"clsid", u"{6B1C}"},           {u"Path", u"C:\\Caf\u00E9 5\\a.dll"},
      {u"Empty", u""},       {u"Longest", FromUtf8(longest)}, {u"TooLong", u""},
      {u"Missing", u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ClassRegistryText(FromUtf8(root) + u"\\" + c.key), c.value) << ToUtf8(c.key);
  }
  EXPECT_EQ(ClassRegistryText(u"vellum250.nothing\\CLSID"), u"");
}

TEST(FileVersion, IsWhatTheFileSays) {
  const auto folder = std::filesystem::temp_directory_path();
  const auto file = folder / "vellum250_version.so.1.2";
  std::ofstream(file) << "no program";
#ifdef _WIN32
  EXPECT_EQ(FileVersion(file.u16string()), u"");
  EXPECT_TRUE(FileVersion(u"kernel32.dll").starts_with(u"10.0."));
#else
  const auto link = folder / "vellum250_version.so";
  std::filesystem::remove(link);
  std::filesystem::create_symlink(file, link);
  EXPECT_EQ(FileVersion(link.u16string()), u"1.2");
  std::filesystem::remove(link);
#endif
  std::filesystem::remove(file);
  for (const Text& none :
       {Text(), Text(u"nothing.dll"), folder.u16string(), file.u16string(), Text(5000, u'x')}) {
    EXPECT_EQ(FileVersion(none), u"") << ToUtf8(none);
  }
}

}  // namespace
}  // namespace vellum250::platform
