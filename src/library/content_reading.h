#pragma once

namespace tidewrack {

/// While it lives, the Contents that its thread reads from a store come through one connection and from one
/// snapshot, which spares each of them the locks of a reading of its own. For a few dozen Contents read one
/// after the other: a large save waits for it to end. Not to be nested; one thread alone.
class ContentReading {
 public:
  ContentReading();
  ~ContentReading();
  ContentReading(const ContentReading&) = delete;
  ContentReading& operator=(const ContentReading&) = delete;
};

}  // namespace tidewrack
