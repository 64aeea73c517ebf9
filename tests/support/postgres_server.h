// A private PostgreSQL for one test program, reached through a socket in a temporary folder.
#pragma once

#include <sys/types.h>

#include <string>

#include "automation/text.h"

namespace vellum250::support {

class PostgresServer {
 public:
  // The user "locked" has it; "web" needs none.
  static constexpr char kPassword[] = "s3;c}ret";

  // Makes a server and starts it. Raises a std::runtime_error that says why it cannot.
  PostgresServer();
  // However the program ends, the server ends with it and leaves nothing behind.
  ~PostgresServer();
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;

  // At once, without a word to those connected. Both raise a std::runtime_error.
  void Stop() { Command("stop"); }
  void Start() { Command("start"); }

  // For the Unicode driver, without a user.
  Text ConnectionString() const;

 private:
  void Command(const std::string& command);

  std::string folder_;
  pid_t process_ = -1;
  int commands_ = -1;
  int answers_ = -1;
};

}  // namespace vellum250::support
