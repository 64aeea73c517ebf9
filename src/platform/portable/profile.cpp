#include "platform/profile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/code_page.h"
#include "platform/portable/profile_text.h"

namespace vellum250::platform {

namespace {

// What Windows' functions are given, a text that ends at a zero, in characters of the code page.
Text Given(TextView text) { return FromCodePage(ToCodePage(text.substr(0, text.find(u'\0')))); }

std::string PathOf(TextView file) { return ToUtf8(file.substr(0, file.find(u'\0'))); }

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  File& operator=(File&&) = delete;
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

  bool IsRegular(struct stat& status) const {
    return descriptor_ >= 0 && fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  }

  std::optional<std::string> ReadAll() const {
    std::string bytes;
    char piece[16384];
    for (;;) {
      const ssize_t count = read(descriptor_, piece, sizeof piece);
      if (count == 0) return bytes;
      if (count > 0) bytes.append(piece, static_cast<size_t>(count));
      if (count < 0 && errno != EINTR) return std::nullopt;
    }
  }

  bool WriteAll(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) bytes.remove_prefix(static_cast<size_t>(count));
    }
    return fsync(descriptor_) == 0;
  }

 private:
  int descriptor_;
};

// Opened for one writer: the others wait. A file that another writer has replaced meanwhile is left
// alone and the new one taken.
File OpenLocked(const std::string& path, bool make) {
  for (;;) {
    File file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK | (make ? O_CREAT : 0), 0666));
    struct stat opened {};
    if (!file.IsRegular(opened)) return File(-1);
    int locked = 0;
    while ((locked = flock(file.get(), LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (locked != 0) return File(-1);
    struct stat now {};
    if (stat(path.c_str(), &now) != 0) {
      if (errno == ENOENT) continue;
      return File(-1);
    }
    if (now.st_ino == opened.st_ino && now.st_dev == opened.st_dev) return file;
  }
}

// A new file takes the place of the old one, whole or not at all.
bool Replace(const std::string& path, const File& old, std::string_view bytes) {
  struct stat status {};
  if (!old.IsRegular(status)) return false;
  std::string temporary = path + ".XXXXXX";
  const File file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return false;
  // Who may not give files away keeps them.
  static_cast<void>(fchown(file.get(), status.st_uid, status.st_gid) == 0);
  if (fchmod(file.get(), status.st_mode & 07777) == 0 && file.WriteAll(bytes) &&
      rename(temporary.c_str(), path.c_str()) == 0) {
    const File folder(
        open(std::filesystem::path(path).parent_path().c_str(), O_RDONLY | O_CLOEXEC));
    if (folder) fsync(folder.get());
    return true;
  }
  unlink(temporary.c_str());
  return false;
}

bool Change(TextView file, bool make, const std::function<void(ProfileText&)>& change) {
  std::error_code error;
  // Links stay links, to the new file.
  const std::filesystem::path whole = std::filesystem::absolute(PathOf(file), error);
  if (error) return false;
  const std::string path = std::filesystem::weakly_canonical(whole, error).string();
  if (error) return false;
  const File old = OpenLocked(path, make);
  if (!old) return !make && access(path.c_str(), F_OK) != 0;
  const auto bytes = old.ReadAll();
  if (!bytes) return false;
  ProfileText text(*bytes);
  change(text);
  const std::string changed = text.Bytes();
  return changed == *bytes || Replace(path, old, changed);
}

Text WithoutQuotes(TextView text) {
  if (text.size() > 1 && text.front() == text.back() &&
      (text.front() == u'"' || text.front() == u'\'')) {
    text = text.substr(1, text.size() - 2);
  }
  return Text(text);
}

}  // namespace

Text ProfileValue(TextView file, TextView section, TextView name, TextView fallback) {
  Text value = Given(fallback);
  value.erase(value.find_last_not_of(u' ') + 1);
  const File opened(open(PathOf(file).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (opened.IsRegular(status)) {
    const auto bytes = opened.ReadAll();
    const auto found =
        bytes ? ProfileText(*bytes).Value(Given(section), Given(name)) : std::nullopt;
    if (found) value = *found;
  }
  constexpr size_t kLongest = 2047;
  return FromCodePage(ToCodePage(WithoutQuotes(value)).substr(0, kLongest));
}

bool SetProfileValue(TextView file, TextView section, TextView name,
                     const std::optional<TextView>& value) {
  return Change(file, value.has_value(), [&](ProfileText& text) {
    if (value) {
      text.Set(Given(section), Given(name), Given(*value));
    } else {
      text.Remove(Given(section), Given(name));
    }
  });
}

bool RemoveProfileSection(TextView file, TextView section) {
  return Change(file, false, [&](ProfileText& text) { text.RemoveSection(Given(section)); });
}

}  // namespace vellum250::platform
