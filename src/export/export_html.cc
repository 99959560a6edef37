#include <algorithm>
#include <array>

#include "export/exporters.h"
#include "platform/byte_count.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

constexpr std::string_view documentHead = R"html(<!DOCTYPE html>
<html lang="es">
<head>
    <meta charset="UTF-8">
    <meta name="viewport" content="width=device-width, initial-scale=1.0">
    <title>Mensajes Exportados - Tidewrack</title>
    <style>
        body {
            font-family: -apple-system, BlinkMacSystemFont, "Segoe UI", Roboto, sans-serif;
            max-width: 900px;
            margin: 0 auto;
            padding: 20px;
            background-color: #f5f5f7;
        }
        .message {
            background: white;
            border-radius: 12px;
            padding: 20px;
            margin-bottom: 20px;
            box-shadow: 0 2px 8px rgba(0,0,0,0.1);
        }
        .message-header {
            border-bottom: 1px solid #e5e5e5;
            padding-bottom: 15px;
            margin-bottom: 15px;
        }
        .subject {
            font-size: 24px;
            font-weight: 600;
            margin-bottom: 10px;
            color: #1d1d1f;
        }
        .metadata {
            font-size: 14px;
            color: #666;
            line-height: 1.6;
        }
        .body {
            line-height: 1.6;
            color: #1d1d1f;
        }
        .labels {
            margin-top: 10px;
        }
        .label {
            display: inline-block;
            background: #007aff;
            color: white;
            padding: 4px 12px;
            border-radius: 12px;
            font-size: 12px;
            margin-right: 6px;
        }
        .attachments {
            margin-top: 15px;
            padding-top: 15px;
            border-top: 1px solid #e5e5e5;
        }
        .attachment {
            background: #f5f5f7;
            padding: 8px 12px;
            border-radius: 6px;
            margin-top: 6px;
            font-size: 14px;
        }
        h1 {
            text-align: center;
            color: #1d1d1f;
        }
        .summary {
            text-align: center;
            color: #666;
            margin-bottom: 30px;
        }
    </style>
</head>
<body>
    <h1>📧 Mensajes Exportados</h1>
    <p class="summary">Total de mensajes: )html";

// For each byte: what stands in its place, nothing where it stands for itself.
constexpr std::array<std::string_view, 256> makeEscapes() {
  std::array<std::string_view, 256> escapes{};
  escapes['&'] = "&amp;";
  escapes['<'] = "&lt;";
  escapes['>'] = "&gt;";
  escapes['"'] = "&quot;";
  escapes['\''] = "&#39;";
  return escapes;
}
constexpr auto escapes = makeEscapes();

std::string_view escapeOf(char character) {
  return escapes[static_cast<unsigned char>(character)];
}

void appendEscaped(std::string& html, std::string_view text) {
  while (!text.empty()) {
    const auto* special =
        std::find_if(text.begin(), text.end(), [](char character) { return !escapeOf(character).empty(); });
    const auto plain = static_cast<std::size_t>(special - text.begin());
    html += text.substr(0, plain);
    text.remove_prefix(plain);
    if (!text.empty()) {
      html += escapeOf(text.front());
      text.remove_prefix(1);
    }
  }
}

void appendBody(TextOutput& output, const EmailMessage& message) {
  std::string& html = output.text;
  if (message.htmlBody) {
    message.htmlBody->appendTo(html);
  } else if (message.plainBody) {
    html += "<pre>";
    appendEscaped(html, output.bytesOf(*message.plainBody));
    html += "</pre>";
  } else {
    html += "<p>";
    appendEscaped(html, message.snippet);
    html += "</p>";
  }
}

void appendMessage(TextOutput& output, const EmailMessage& message, const DateStyle& dateStyle) {
  std::string& html = output.text;
  html += "<div class=\"message\">\n    <div class=\"message-header\">\n        <div class=\"subject\">";
  appendEscaped(html, message.subject);
  html += "</div>\n        <div class=\"metadata\">\n            <div><strong>De:</strong> ";
  appendEscaped(html, displayForm(message.from));
  html += "</div>\n            <div><strong>Para:</strong> ";
  appendEscaped(html, displayForms(message.to));
  html += "</div>";
  if (!message.cc.empty()) {
    html += "        <div><strong>CC:</strong> ";
    appendEscaped(html, displayForms(message.cc));
    html += "</div>";
  }
  if (message.date) {
    html += "        <div><strong>Fecha:</strong> ";
    appendEscaped(html, dateStyle.format(*message.date));
    html += "</div>";
  }
  html += "        </div>";
  if (!message.labels.empty()) {
    html += "    <div class=\"labels\">";
    for (const auto& label : message.labels) {
      html += "        <span class=\"label\">";
      appendEscaped(html, label);
      html += "</span>";
    }
    html += "    </div>";
  }
  html += "    </div>\n    <div class=\"body\">";
  appendBody(output, message);
  html += "    </div>";
  if (!message.attachments.empty()) {
    html += "<div class=\"attachments\">\n    <strong>📎 Adjuntos (" +
            std::to_string(message.attachments.size()) + "):</strong>";
    for (const auto& attachment : message.attachments) {
      html += "<div class=\"attachment\">";
      appendEscaped(html, attachment.fileName);
      html += " - " + formatByteCount(attachment.data.size()) + "</div>";
    }
    html += "</div>";
  }
  html += "</div>";
}

class HTMLWriter final : public FormatWriter {
 public:
  explicit HTMLWriter(std::size_t count) : count_(count) {}

  [[nodiscard]] std::string head() const override {
    return std::string(documentHead) + std::to_string(count_) + "</p>\n";
  }
  [[nodiscard]] std::string tail() const override { return "</body>\n</html>"; }
  void write(const EmailMessage& message, std::size_t /*place*/, TextOutput& output) const override {
    appendMessage(output, message, dateStyle_);
    output.mayGo();
  }
  [[nodiscard]] std::uint64_t weight(const EmailMessage& message) const override {
    return message.htmlBody ? weightOf(message.htmlBody) : weightOf(message.plainBody);
  }

 private:
  const std::size_t count_;
  const DateStyle dateStyle_ = DateStyle::longDateAndTime();
};

}  // namespace

std::unique_ptr<FormatWriter> makeHTMLWriter(std::size_t count) {
  return std::make_unique<HTMLWriter>(count);
}

}  // namespace tidewrack
