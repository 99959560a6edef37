#pragma once

#include "export/export_utility.h"

/// One builder a format, for a list that is not empty. See ExportUtility::exportMessages.
namespace tidewrack {

struct ExportRun {
  const MessageList& messages;
  const ExportUtility::Sink& sink;
  Date now;
  const ExportUtility::Progress& progress;

  void finished(std::size_t done) const {
    if (progress) {
      progress(done);
    }
  }
};

void exportText(const ExportRun& run);
void exportHTML(const ExportRun& run);
void exportJSON(const ExportRun& run);
void exportCSV(const ExportRun& run);
void exportMBOX(const ExportRun& run);

/// The texts with a separator between any two.
template <typename List, typename TextOf>
std::string joined(const List& list, std::string_view separator, TextOf textOf) {
  std::string text;
  bool isFirst = true;
  for (const auto& element : list) {
    if (!isFirst) {
      text += separator;
    }
    isFirst = false;
    text += textOf(element);
  }
  return text;
}

}  // namespace tidewrack
