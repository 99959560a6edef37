#include "export/export_utility.h"

#include "export/exporters.h"
#include "export/ordered_writing.h"
#include "platform/log.h"

namespace tidewrack {
namespace {

using Format = ExportUtility::ExportFormat;

std::string description(ExportUtility::ExportError::Kind kind, const std::string& underlying) {
  switch (kind) {
    case ExportUtility::ExportError::Kind::noMessages:
      return "No hay mensajes para exportar";
    case ExportUtility::ExportError::Kind::encodingFailed:
      return "Error al codificar los datos";
    case ExportUtility::ExportError::Kind::writeFailed:
      return "Error al escribir el archivo: " + underlying;
  }
  return underlying;
}

std::unique_ptr<FormatWriter> makeWriter(Format format, std::size_t count, Date now) {
  switch (format) {
    case Format::txt:
      return makeTextWriter(count);
    case Format::html:
      return makeHTMLWriter(count);
    case Format::json:
      return makeJSONWriter();
    case Format::csv:
      return makeCSVWriter();
    case Format::mbox:
      break;
  }
  return makeMBOXWriter(now);
}

}  // namespace

ExportUtility::ExportError::ExportError(Kind kind, const std::string& underlying)
    : Failure(description(kind, underlying)), kind_(kind) {}

const char* ExportUtility::title(ExportFormat format) {
  switch (format) {
    case Format::txt:
      return "Texto Plano (.txt)";
    case Format::html:
      return "HTML (.html)";
    case Format::json:
      return "JSON (.json)";
    case Format::csv:
      return "CSV (.csv)";
    case Format::mbox:
      return "MBOX (.mbox)";
  }
  return "";
}

const char* ExportUtility::fileExtension(ExportFormat format) {
  switch (format) {
    case Format::txt:
      return "txt";
    case Format::html:
      return "html";
    case Format::json:
      return "json";
    case Format::csv:
      return "csv";
    case Format::mbox:
      return "mbox";
  }
  return "";
}

std::optional<Format> ExportUtility::formatFromExtension(std::string_view extension) {
  for (const auto format : allFormats) {
    if (extension == fileExtension(format)) {
      return format;
    }
  }
  return std::nullopt;
}

void ExportUtility::exportMessages(const MessageList& messages, ExportFormat format, const Sink& sink,
                                   Date now, const Progress& progress) {
  Logger::of("Export").info("Exportando %ld mensajes en formato %s",
                            {static_cast<long long>(messages.size()), std::string(title(format))});
  if (messages.empty()) {
    throw ExportError(ExportError::Kind::noMessages);
  }
  const auto makeWriter = [&] { return tidewrack::makeWriter(format, messages.size(), now); };
  const auto writer = makeWriter();
  sink(writer->head());
  writeInOrder(messages, makeWriter, sink, progress);
  sink(writer->tail());
}

}  // namespace tidewrack
