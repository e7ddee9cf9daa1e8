#include "report/HtmlText.h"

#include <fmt/format.h>

#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

// Numbers of characters, so that the page stays ASCII.
constexpr const char* kCheckMark = "&#10003;";
constexpr const char* kCross = "&#10005;";

std::string MarkOf(Severity severity) {
  switch (severity) {
    case Severity::Ok:
      return kCheckMark;
    case Severity::Warning:
      return "!";
    case Severity::Critical:
      return kCross;
    case Severity::Unknown:
      break;
  }
  return "?";
}

}  // namespace

std::string HtmlShown(const std::string& text) {
  std::string shown;
  shown.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        shown += "&amp;";
        break;
      case '<':
        shown += "&lt;";
        break;
      case '>':
        shown += "&gt;";
        break;
      case '"':
        shown += "&quot;";
        break;
      case '\'':
        shown += "&#39;";
        break;
      default:
        shown += c;
    }
  }
  return shown;
}

std::string HtmlText(const std::string& text) { return HtmlShown(EscapeControlBytes(text)); }

std::string HtmlClass(Severity severity) {
  switch (severity) {
    case Severity::Ok:
      return "ok";
    case Severity::Warning:
      return "warning";
    case Severity::Critical:
      return "critical";
    case Severity::Unknown:
      break;
  }
  return "unknown";
}

std::string HtmlMark(Severity severity) {
  return fmt::format("{} {}", MarkOf(severity), SeverityWord(severity));
}

std::string HtmlElement(const std::string& open, const std::string& content) {
  return fmt::format("<{}>{}</{}>\n", open, content, open.substr(0, open.find(' ')));
}

}  // namespace Tavrin
