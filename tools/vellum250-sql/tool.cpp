#include "vellum250-sql/tool.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>

#include "database/connection.h"
#include "database/connection_string.h"
#include "vellum250-sql/options.h"
#include "vellum250-sql/prompt.h"
#include "vellum250-sql/results.h"
#include "vellum250-sql/script.h"

namespace vellum250::sqltool {
namespace {

using database::Batch;
using database::Connection;
using database::DatabaseFailure;

void Write(std::FILE* file, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), file);
}

// What a source is called in messages.
std::string NameOf(const Source& source) {
  switch (source.kind) {
    case Source::Kind::StandardInput:
      return "standard input";
    case Source::Kind::Statement:
      return "-q";
    case Source::Kind::File:
      break;
  }
  // It may be a connection string that was taken for a script.
  const bool isPath = source.text.find('=') == std::string::npos;
  return isPath ? source.text : ToUtf8(database::WithoutPasswords(FromUtf8(source.text)));
}

std::string ReadAll(std::FILE* file) {
  std::string bytes;
  char buffer[1 << 16];
  // A terminal that was read to its end would be read on.
  while (!std::feof(file) && !std::ferror(file)) {
    bytes.append(buffer, std::fread(buffer, 1, sizeof buffer, file));
  }
  if (std::ferror(file)) {
    throw Failure(57, kLibrarySource, u"cannot be read: " + FromUtf8(std::strerror(errno)));
  }
  return bytes;
}

Text ScriptOf(const Source& source, std::FILE* in) {
  if (source.kind == Source::Kind::StandardInput) return ScriptFromBytes(ReadAll(in));
  if (source.kind == Source::Kind::Statement) return ScriptFromBytes(source.text);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(source.text.c_str(), "rb"),
                                                             &std::fclose);
  if (!file) {
    throw Failure(53, kLibrarySource, u"cannot be opened: " + FromUtf8(std::strerror(errno)));
  }
  return ScriptFromBytes(ReadAll(file.get()));
}

class Runner {
 public:
  Runner(const Options& options, std::FILE* in, std::FILE* out, std::FILE* errors)
      : options_(options), in_(in), out_(out), errors_(errors) {}

  bool Run() {
    if (IsInteractive()) return Converse();
    for (const Source& source : options_.sources) {
      const Outcome outcome = RunSource(source);
      if (options_.json) {
        std::string document;
        AppendDocument(document, outcome);
        Write(out_, document);
      }
      if (outcome.failure) {
        Tell(NameOf(source), outcome);
        return false;
      }
    }
    return true;
  }

 private:
  bool IsInteractive() const {
    return options_.sources.size() == 1 &&
           options_.sources[0].kind == Source::Kind::StandardInput && !options_.json &&
           isatty(fileno(in_)) != 0;
  }

  // One connection for all batches; a failure ends its batch and is told.
  bool Converse() {
    Outcome opening;
    Guarded(opening, [&] { connection_ = Open(); });
    if (opening.failure) {
      Tell("", opening);
      return false;
    }
    RunPrompt(in_, out_, errors_, [&](const ScriptBatch& batch) {
      Outcome outcome;
      Guarded(outcome, [&] { RunBatch("batch", batch, outcome); });
      for (const int64_t count : outcome.rowCounts) {
        Write(out_, "(" + std::to_string(count) + (count == 1 ? " row" : " rows") + " changed)\n");
      }
      if (outcome.failure) Tell("batch", outcome);
    });
    return true;
  }

  // Runs `action`; what it raises becomes the outcome's failure.
  template <typename Action>
  static void Guarded(Outcome& outcome, Action action) {
    try {
      action();
    } catch (const DatabaseFailure& failure) {
      outcome.failure = failure;
      outcome.number = failure.NativeNumber();
    } catch (...) {
      outcome.failure = CurrentFailure();
    }
  }

  Outcome RunSource(const Source& source) {
    Outcome outcome;
    Guarded(outcome, [&] {
      if (!connection_) connection_ = Open();
      const Text script = ScriptOf(source, in_);
      std::vector<ScriptBatch> batches;
      if (source.kind == Source::Kind::Statement) {
        batches.push_back({script, 1, 1});
      } else {
        batches = SplitBatches(script);
      }
      for (size_t i = 0; i < batches.size() && !outcome.failure; ++i) {
        RunBatch(NameOf(source), batches[i], outcome);
      }
    });
    return outcome;
  }

  std::unique_ptr<Connection> Open() const {
    // The first value of a key counts.
    const std::string create = options_.create ? "Create=yes;" : "";
    return Connection::Open(FromUtf8(create + options_.connection));
  }

  // As often as the script says, up to the first failure.
  void RunBatch(const std::string& name, const ScriptBatch& script, Outcome& outcome) {
    for (int32_t i = 0; i < script.times && !outcome.failure; ++i) RunOnce(name, script, outcome);
  }

  void RunOnce(const std::string& name, const ScriptBatch& script, Outcome& outcome) {
    const auto start = std::chrono::steady_clock::now();
    Batch batch = connection_->Run(script.sql);
    if (options_.timing) {
      const std::chrono::duration<double, std::milli> time =
          std::chrono::steady_clock::now() - start;
      std::fprintf(errors_, "%s:%d: %.3f ms\n", name.c_str(), script.firstLine, time.count());
    }
    outcome.rowCounts.insert(outcome.rowCounts.end(), batch.rowCounts.begin(),
                             batch.rowCounts.end());
    for (database::Recordset& rows : batch.results) {
      if (options_.json) {
        outcome.results.push_back(std::move(rows));
      } else {
        Print(rows);
      }
    }
    if (batch.failure) {
      outcome.failure = *batch.failure;
      outcome.number = batch.failure->NativeNumber();
      if (batch.failure->Line() > 0) outcome.line = script.firstLine + batch.failure->Line() - 1;
    }
  }

  // An empty line stands between the tables.
  void Print(const database::Recordset& rows) {
    std::string text = printed_ ? "\n" : "";
    AppendTable(text, rows);
    Write(out_, text);
    printed_ = true;
  }

  void Tell(const std::string& name, const Outcome& outcome) {
    // Without a connection it is none of the script's doing.
    std::string text = (connection_ ? name : "vellum250-sql") + ":";
    if (outcome.line > 0) text += std::to_string(outcome.line) + ":";
    if (outcome.number != 0) text += " message " + std::to_string(outcome.number) + ":";
    text += " " + ToUtf8(outcome.failure->Description()) + "\n";
    std::fflush(out_);
    Write(errors_, text);
  }

  const Options& options_;
  std::FILE* in_;
  std::FILE* out_;
  std::FILE* errors_;
  std::unique_ptr<Connection> connection_;
  bool printed_ = false;
};

}  // namespace

int RunTool(std::span<const std::string> arguments, std::FILE* in, std::FILE* out,
            std::FILE* errors) {
  Options options;
  try {
    options = ReadOptions(arguments);
  } catch (const UsageError& error) {
    Write(errors, "vellum250-sql: " + error.message + "\n" + kUsage);
    return kWrongUsage;
  }
  if (options.help) {
    Write(out, kUsage);
    return kSuccess;
  }
  const bool ran = Runner(options, in, out, errors).Run();
  if (std::fflush(out) != 0 || std::ferror(out)) {
    Write(errors, "vellum250-sql: the output cannot be written\n");
    return kFailed;
  }
  return ran ? kSuccess : kFailed;
}

}  // namespace vellum250::sqltool
