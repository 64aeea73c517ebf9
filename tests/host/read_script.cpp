#include <cwchar>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "host/script.h"

namespace vellum250::host {
namespace {

// Collects a page's source line by line and where each line comes from.
class PageReader {
 public:
  explicit PageReader(Script& script) : script_(script) {}

  // Markup outside of <% and %>.
  void Markup(TextView markup) {
    // Blank before the first statement, it is none: Option Explicit must come first.
    const bool isBlank = markup.find_first_not_of(u" \t\r\n") == TextView::npos;
    if (!markup.empty() && !(isBlank && script_.source.empty())) {
      Line(u"Response.WriteBlock " + NumberText(static_cast<int64_t>(script_.blocks.size())));
      script_.blocks.emplace_back(markup);
    }
    for (const char16_t c : markup) line_ += c == u'\n' ? 1 : 0;
  }

  // What stands between them: "= value", "@ directive" or statements.
  void Code(TextView code) {
    if (code.starts_with(u'@')) return;
    if (code.starts_with(u'=')) return Line(u"Response.Write(" + Text(code.substr(1)) + u")");
    for (size_t end; (end = code.find(u'\n')) != TextView::npos; code.remove_prefix(end + 1)) {
      Line(code.substr(0, end));
      ++line_;
    }
    Line(code);
  }

 private:
  void Line(TextView statement) {
    (script_.source += statement) += u'\n';
    script_.lines.push_back(line_);
  }

  Script& script_;
  size_t line_ = 1;
};

void ReadPage(Script& script, TextView page) {
  PageReader reader(script);
  while (true) {
    const size_t begin = page.find(u"<%");
    reader.Markup(page.substr(0, begin));
    if (begin == TextView::npos) return;
    const size_t end = page.find(u"%>", begin);
    if (end == TextView::npos) throw std::runtime_error("<% without %>");
    reader.Code(page.substr(begin + 2, end - begin - 2));
    page.remove_prefix(end + 2);
  }
}

}  // namespace

Script ReadScript(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::stringstream bytes;
  if (!stream) throw std::runtime_error("cannot be opened");
  bytes << stream.rdbuf();
  Text text = FromUtf8(bytes.view());
  if (text.starts_with(u'\xFEFF')) text.erase(0, 1);

  Script script{file, L"VBScript", {}, {}, {}};
  const std::wstring extension = file.extension().wstring();
  const auto is = [&](const wchar_t* wanted) { return _wcsicmp(extension.c_str(), wanted) == 0; };
  if (is(L".asp")) {
    ReadPage(script, text);
  } else if (is(L".vbs") || is(L".js")) {
    script.source = std::move(text);
    if (is(L".js")) script.engine = L"JScript";
  } else {
    throw std::runtime_error("has no extension of a script: .vbs, .js or .asp");
  }
  return script;
}

}  // namespace vellum250::host
