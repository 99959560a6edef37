#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "mail/archive.h"
#include "mail/body_walk.h"
#include "mail/known_headers.h"
#include "mail/records.h"
#include "mail/text_pool.h"

namespace tidewrack {

/// Makes messages out of an archive. It keeps its buffers and a pool of texts from one message to the next,
/// so each thread uses one of its own for as long as it can.
class MessageReader {
 public:
  MessageReader(std::shared_ptr<const Archive> archive, const Text& libraryID, const Text& libraryName);
  MessageReader(const MessageReader&) = delete;
  MessageReader& operator=(const MessageReader&) = delete;

  /// The message whose raw bytes begin at `offset`, trimmed; null when they are nothing but white space.
  std::shared_ptr<const EmailMessage> read(std::size_t offset, std::size_t length);

  /// The message that the whole archive is, which is clean text and is not trimmed.
  EmailMessage readWhole();

 private:
  void make(const CleanMessage& clean, EmailMessage& message);

  std::shared_ptr<const Archive> archive_;
  Text libraryID_;  // copies of its own, so that threads do not share the counts of references
  Text libraryName_;
  TextPool pool_;
  KnownHeaders headers_;
  BodyWalk walk_{&pool_};
};

}  // namespace tidewrack
