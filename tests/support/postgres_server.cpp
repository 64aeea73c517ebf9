#include "support/postgres_server.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace vellum250::support {

PostgresServer::PostgresServer() {
  folder_ = (std::filesystem::temp_directory_path() / "vellum250_postgres_XXXXXX").string();
  int commands[2];
  int answers[2];
  // Nobody else whom the program starts may hold the ends: closing them ends the server.
  if (mkdtemp(folder_.data()) == nullptr || pipe2(commands, O_CLOEXEC) != 0 ||
      pipe2(answers, O_CLOEXEC) != 0) {
    throw std::runtime_error("PostgreSQL: no folder or pipes in " + folder_);
  }
  commands_ = commands[1];
  answers_ = answers[0];

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, commands[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
  std::string script = VELLUM250_SOURCE_DIR "/tests/support/postgres-server";
  std::vector<char*> arguments = {script.data(), folder_.data(), nullptr};
  setenv("PASSWORD", kPassword, 1);
  const int failed =
      posix_spawn(&process_, script.c_str(), &actions, nullptr, arguments.data(), environ);
  unsetenv("PASSWORD");
  posix_spawn_file_actions_destroy(&actions);
  close(commands[0]);
  close(answers[1]);
  if (failed != 0) throw std::runtime_error("PostgreSQL: cannot run " + script);
  Start();
}

PostgresServer::~PostgresServer() {
  close(commands_);
  close(answers_);
  waitpid(process_, nullptr, 0);
}

Text PostgresServer::ConnectionString() const {
  // Without the option a boolean arrives as a text.
  return u"Driver={PostgreSQL Unicode};Server=" + FromUtf8(folder_) +
         u";Database=postgres;BoolsAsChar=0;";
}

void PostgresServer::Command(const std::string& command) {
  const std::string line = command + "\n";
  std::string answer;
  if (write(commands_, line.data(), line.size()) == static_cast<ssize_t>(line.size())) {
    for (char c = 0; read(answers_, &c, 1) == 1 && c != '\n';) answer.push_back(c);
  }
  if (answer != "ok") throw std::runtime_error("PostgreSQL: " + answer);
}

}  // namespace vellum250::support
