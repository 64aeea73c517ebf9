// The program at a terminal.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vellum250::sqltool {
namespace {

namespace fs = std::filesystem;

// The program on a pseudo-terminal of its own; killed when the test leaves it running.
class Terminal {
 public:
  Terminal(const fs::path& home, const std::string& database, const char* option = nullptr) {
    const std::string connection = "Driver=Vellum250;Database={" + database + "};";
    child_ = forkpty(&master_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    setenv("HOME", home.c_str(), 1);
    setenv("TERM", "dumb", 1);
    execl(VELLUM250_SQL_TOOL, VELLUM250_SQL_TOOL, "--create", "--connection", connection.c_str(),
          option, nullptr);
    _exit(127);
  }
  ~Terminal() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
    close(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Types `keys` and waits for `answer` behind everything seen so far.
  testing::AssertionResult Type(const std::string& keys, const std::string& answer) {
    if (write(master_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
      return testing::AssertionFailure() << "the terminal takes no keys";
    }
    return Expect(answer);
  }
  testing::AssertionResult Expect(const std::string& answer) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (true) {
      const size_t found = seen_.find(answer);
      if (found != std::string::npos) {
        seen_.erase(0, found + answer.size());
        return testing::AssertionSuccess();
      }
      if (std::chrono::steady_clock::now() > deadline || !ReadSome()) {
        return testing::AssertionFailure() << "no \"" << answer << "\" in:\n" << seen_;
      }
    }
  }

  // Types a control key when the prompt is there and its reader has taken the terminal over:
  // before, the terminal itself would act on the key.
  testing::AssertionResult Press(const std::string& key, const std::string& answer) {
    termios modes{};
    for (int tries = 0; tries < 20000; ++tries) {
      if (tcgetattr(master_, &modes) == 0 && (modes.c_lflag & ICANON) == 0) {
        return Type(key, answer);
      }
      usleep(1000);
    }
    return testing::AssertionFailure() << "nobody reads keys";
  }

  // The exit code; the rest of what was shown is in Seen().
  int Wait() {
    while (ReadSome()) {
    }
    if (timedOut_) kill(child_, SIGKILL);
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  const std::string& Seen() const { return seen_; }

 private:
  // False when nothing comes for a while, or nothing any more.
  bool ReadSome() {
    pollfd descriptor{master_, POLLIN, 0};
    constexpr int kMilliseconds = 20000;
    timedOut_ = poll(&descriptor, 1, kMilliseconds) <= 0;
    if (timedOut_) return false;
    char buffer[4096];
    const ssize_t count = read(master_, buffer, sizeof buffer);
    if (count <= 0) return false;
    seen_.append(buffer, static_cast<size_t>(count));
    return true;
  }

  pid_t child_ = -1;
  int master_ = -1;
  bool timedOut_ = false;
  std::string seen_;
};

class Prompt : public testing::Test {
 protected:
  Prompt() { fs::create_directories(home_); }
  ~Prompt() override { fs::remove_all(home_); }

  std::string History() const {
    std::ifstream file(home_ / ".vellum250_sql_history");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }

  const fs::path home_ =
      fs::path(testing::TempDir()) / ("vellum250-prompt-" + std::to_string(::getpid()));
  const std::string database_ = home_ / "members.db";
};

TEST_F(Prompt, KeepsTheConnectionFromBatchToBatchAlsoAfterAFailure) {
  Terminal terminal(home_, database_);
  EXPECT_TRUE(terminal.Expect("1> "));
  EXPECT_TRUE(terminal.Type("CREATE TABLE t (n int, s nvarchar(9))\n", "2> "));
  EXPECT_TRUE(terminal.Type("go\n", "1> "));
  EXPECT_TRUE(terminal.Type("BEGIN TRAN\n", "2> "));
  EXPECT_TRUE(terminal.Type("INSERT t VALUES (7, N'Zo\xC3\xAB')\n", "3> "));
  EXPECT_TRUE(terminal.Type("GO\n", "(1 row changed)"));
  EXPECT_TRUE(
      terminal.Type("\nSELECT x\nFROM t\nGO\n", "batch:2: message 207: Invalid column name 'x'."));
  EXPECT_TRUE(terminal.Type("SELECT @@TRANCOUNT AS open_ones, s FROM t\nGO\n", "open_ones"));
  EXPECT_TRUE(terminal.Expect("1\tZo\xC3\xAB"));
  EXPECT_TRUE(terminal.Type("COMMIT\nGO\n", "1> "));
  // GO inside a comment and exit inside a text are none.
  EXPECT_TRUE(terminal.Type("/*\nGO\n*/ SELECT '\nexit\n' AS lines\nGO\n", "\\nexit\\n"));
  EXPECT_TRUE(terminal.Type("Exit\n", "Exit"));
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(Prompt, ControlKeysGiveUpABatchAndEndTheProgram) {
  Terminal terminal(home_, database_);
  EXPECT_TRUE(terminal.Expect("1> "));
  EXPECT_TRUE(terminal.Type("CREATE TABLE given_up (n int)\n", "2> "));
  EXPECT_TRUE(terminal.Press("half a line\x03", "1> "));
  EXPECT_TRUE(terminal.Type("SELECT count(*) AS tables FROM information_schema.tables\nGO\n",
                            "tables\r\n0"));
  EXPECT_TRUE(terminal.Expect("1> "));
  EXPECT_TRUE(terminal.Press("\x03", "1> "));
  EXPECT_TRUE(terminal.Type("SELECT 1\n", "2> "));
  EXPECT_TRUE(terminal.Press("\x04", "The lines since the last GO were not run."));
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(Prompt, OneEndOfInputIsEnoughForADocument) {
  Terminal terminal(home_, database_, "--json");
  EXPECT_TRUE(terminal.Type("SELECT 42 AS n\n", "SELECT 42 AS n\r\n"));
  EXPECT_TRUE(terminal.Type("\x04", "[[42]]"));
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(Prompt, RemembersLinesForTheNextRunButNoPassword) {
  {
    Terminal terminal(home_, database_);
    EXPECT_TRUE(terminal.Expect("1> "));
    EXPECT_TRUE(terminal.Type("SELECT 'PWD=tiger' AS a\nGO\n", "PWD=tiger"));
    EXPECT_TRUE(terminal.Type("SELECT 40 + 2 AS answer\nGO\n", "42"));
    // The terminal is closed under the program.
  }
  EXPECT_EQ(History().find("tiger"), std::string::npos);
  struct stat info {};
  ASSERT_EQ(stat((home_ / ".vellum250_sql_history").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0077, 0U);

  Terminal terminal(home_, database_);
  EXPECT_TRUE(terminal.Expect("1> "));
  // Up once: GO is not worth a place.
  EXPECT_TRUE(terminal.Press("\x10\n", "SELECT 40 + 2 AS answer"));
  EXPECT_TRUE(terminal.Type("GO\n", "42"));
  EXPECT_TRUE(terminal.Expect("1> "));
  EXPECT_TRUE(terminal.Press("\x04", ""));
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(Prompt, DoesWithoutAHistoryThatCannotBeKept) {
  Terminal terminal("/nowhere", database_);
  EXPECT_TRUE(terminal.Expect("1> "));
  EXPECT_TRUE(terminal.Type("SELECT 1 AS n\nGO\n", "n\r\n1"));
  EXPECT_TRUE(terminal.Type("quit\n", "quit"));
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(Prompt, EndsWhenTheDatabaseCannotBeOpened) {
  Terminal terminal(home_, home_ / "no/such/folder.db");
  EXPECT_EQ(terminal.Wait(), 1);
  EXPECT_NE(terminal.Seen().find("vellum250-sql: "), std::string::npos) << terminal.Seen();
}

}  // namespace
}  // namespace vellum250::sqltool
