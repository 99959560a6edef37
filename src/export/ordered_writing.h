#pragma once

#include <functional>
#include <memory>

#include "export/exporters.h"

namespace tidewrack {

/// Gives the messages of a list to a sink, in their order, made ready on all processors: a few threads write
/// stretches of the list into memory, ahead of the calling thread, which passes them on. What is ahead is
/// bounded, whatever the number and the size of the messages; a large message is written by the calling
/// thread, straight to the sink. `makeWriter` is called on each thread. What a writer, the sink or `progress`
/// throws comes out here, once all threads have ended.
void writeInOrder(const MessageList& messages,
                  const std::function<std::unique_ptr<FormatWriter>()>& makeWriter,
                  const ExportUtility::Sink& sink, const ExportUtility::Progress& progress);

}  // namespace tidewrack
