#include "vellum250-sql/options.h"

#include <optional>
#include <string_view>

namespace vellum250::sqltool {

const char kUsage[] =
    "Usage: vellum250-sql --connection <connection string> [options] [script.sql ...]\n"
    "                     [-q <statement>]\n"
    "Runs T-SQL and prints the rows it gives, separated by tabs, under a header line.\n"
    "Scripts and statements run in the order given, each script batch by batch at its GO\n"
    "lines; GO 5 runs a batch five times. The first failure ends the run. Without any, or for -,\n"
    "standard input is read; from a terminal batch by batch, with a prompt, and then a failure\n"
    "ends only its batch.\n"
    "\n"
    "  --connection <text>  the database, e.g. \"Driver=Vellum250;Database=members.db;\"\n"
    "  --create             make the embedded database's file when there is none\n"
    "  -q <statement>       run this batch\n"
    "  --json               print one JSON document for each script or statement\n"
    "  --timing             tell the time of each batch on the error stream\n"
    "  --help               print this\n"
    "\n"
    "Exit code: 0 when everything ran, 1 after a failure, 2 for a wrong command line.\n";

namespace {

// The name of an argument `name=value`.
std::string_view NameOf(std::string_view argument) {
  return argument.substr(0, argument.find('='));
}

}  // namespace

Options ReadOptions(std::span<const std::string> arguments) {
  Options options;
  std::optional<std::string> connection;
  bool onlySources = false;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const auto value = [&](std::string_view name) {
      if (argument.size() > name.size()) return argument.substr(name.size() + 1);
      if (i + 1 == arguments.size()) throw UsageError{std::string(name) + " needs a value"};
      return arguments[++i];
    };
    if (argument == "-") {
      options.sources.push_back({Source::Kind::StandardInput, {}});
    } else if (onlySources || !argument.starts_with('-')) {
      options.sources.push_back({Source::Kind::File, argument});
    } else if (argument == "--") {
      onlySources = true;
    } else if (NameOf(argument) == "--connection") {
      if (connection) throw UsageError{"--connection is given twice"};
      connection = value("--connection");
    } else if (argument == "-q") {
      options.sources.push_back({Source::Kind::Statement, value("-q")});
    } else if (argument == "--create") {
      options.create = true;
    } else if (argument == "--json") {
      options.json = true;
    } else if (argument == "--timing") {
      options.timing = true;
    } else if (argument == "--help") {
      options.help = true;
      return options;
    } else {
      throw UsageError{"unknown option " + std::string(NameOf(argument))};
    }
  }
  if (!connection) throw UsageError{"--connection is missing"};
  options.connection = *connection;
  if (options.sources.empty()) options.sources.push_back({Source::Kind::StandardInput, {}});
  return options;
}

}  // namespace vellum250::sqltool
