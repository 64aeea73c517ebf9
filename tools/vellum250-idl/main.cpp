#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "automation/failure.h"
#include "vellum250-idl/library.h"

namespace {

constexpr char kUsage[] =
    "Usage: vellum250-idl --idl | --manifest amd64 | --manifest x86 | --markdown\n"
    "Writes what Windows and its callers know about the published classes, from their tables, to\n"
    "the standard output.\n"
    "\n"
    "  --idl             the interface description, for widl\n"
    "  --manifest <cpu>  the assembly manifest for use without registration\n"
    "  --markdown        the reference\n"
    "\n"
    "Exit code: 0 when it was written, 1 after a failure, 2 for a wrong command line.\n";

// Empty for a wrong command line.
std::string Write(int argc, char** argv) {
  using namespace vellum250::idltool;
  const std::string_view what = argc > 1 ? argv[1] : "";
  const std::string_view architecture = argc > 2 ? argv[2] : "";
  if (argc == 2 && what == "--idl") return WriteIdl(PublishedLibrary());
  if (argc == 2 && what == "--markdown") return WriteReference(PublishedLibrary());
  if (argc == 3 && what == "--manifest" && (architecture == "amd64" || architecture == "x86")) {
    return WriteManifest(PublishedLibrary(), architecture);
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  try {
    const std::string text = Write(argc, argv);
    if (text.empty()) {
      std::fputs(kUsage, stderr);
      return 2;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (written && std::fflush(stdout) == 0) return 0;
    std::perror("vellum250-idl");
  } catch (const vellum250::Failure& failure) {
    std::fprintf(stderr, "vellum250-idl: %s\n", failure.what());
  }
  return 1;
}
