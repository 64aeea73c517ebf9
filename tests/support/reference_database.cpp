#include "support/reference_database.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "automation/conversion.h"
#include "vellum250-sql/script.h"

namespace vellum250::support {
namespace {

namespace fs = std::filesystem;

Text ConnectionTo(const fs::path& file, TextView more = {}) {
  return u"Driver=Vellum250;Database={" + file.u16string() + u"};" + Text(more);
}

// Windows keeps a file as long as a connection rests in the pool.
void Remove(const fs::path& file) {
  std::error_code ignored;
  for (const char* end : {"", "-wal", "-shm", "-journal"})
    fs::remove(fs::path(file) += end, ignored);
}

fs::path NewFile() {
  static std::atomic<int> count = 0;
  fs::path file = fs::path(testing::TempDir()) / u"vellum250-t\u00E9st-";
  file += std::to_string(::getpid()) + "-" + std::to_string(++count) + ".db";
  Remove(file);  // left by a process that had the same number
  return file;
}

void Load(database::Connection& connection, const fs::path& script) {
  std::ifstream stream(script, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(stream), {});
  const Text text = sqltool::ScriptFromBytes(bytes);
  for (const sqltool::ScriptBatch& batch : sqltool::SplitBatches(text)) {
    const auto failure = connection.Run(batch.sql).failure;
    if (!failure) continue;
    throw WithDetail(*failure, FromUtf8(script.filename().string()) + u" line " +
                                   NumberText(batch.firstLine + failure->Line() - 1));
  }
}

// The loaded file of which every test gets a copy.
class Template {
 public:
  explicit Template(Contents contents) {
    std::vector<fs::path> scripts;
    for (const auto& entry : fs::directory_iterator(VELLUM250_SOURCE_DIR "/database")) {
      const bool sample = entry.path().filename().string().find("-sample-") != std::string::npos;
      if (entry.path().extension() == ".sql" && (!sample || contents == Contents::Sample)) {
        scripts.push_back(entry.path());
      }
    }
    std::ranges::sort(scripts);
    const auto connection = database::Connection::Open(ConnectionTo(file_, u"Create=yes;"));
    for (const fs::path& script : scripts) Load(*connection, script);
  }
  ~Template() { Remove(file_); }

  void CopyTo(const fs::path& file) const {
    fs::copy_file(file_, file);
    // What is not in the file yet, as long as the connection lives on in a pool.
    const fs::path log = fs::path(file_) += "-wal";
    if (fs::exists(log)) fs::copy_file(log, fs::path(file) += "-wal");
  }

 private:
  fs::path file_ = NewFile();
};

const Template& TemplateOf(Contents contents) {
  if (contents == Contents::Schema) {
    static const Template schema(Contents::Schema);
    return schema;
  }
  static const Template sample(Contents::Sample);
  return sample;
}

}  // namespace

ReferenceDatabase::ReferenceDatabase(Contents contents)
    : file_(NewFile()), connectionString_(ConnectionTo(file_)) {
  TemplateOf(contents).CopyTo(file_);
}

ReferenceDatabase::~ReferenceDatabase() { Remove(file_); }

database::Recordset ReferenceDatabase::Query(TextView sql) const {
  return database::Connection::Open(connectionString_)->Execute(sql);
}

std::string ReferenceDatabase::Value(TextView sql) const {
  const database::Recordset rows = Query(sql);
  if (rows.Eof()) return "(no row)";
  const Variant& value = rows.Field(0);
  return value.IsNull() ? "NULL" : ToUtf8(ToText(value));
}

}  // namespace vellum250::support
