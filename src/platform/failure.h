#pragma once

#include <stdexcept>
#include <string>

namespace tidewrack {

/// Base of every failure that reaches the user: `what()` is its localised description, a whole sentence.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& localizedDescription) : std::runtime_error(localizedDescription) {}
};

/// A file or folder could not be read, written, copied or removed.
class FileFailure : public Failure {
 public:
  using Failure::Failure;
};

/// The store could not be opened, read or changed.
class StoreFailure : public Failure {
 public:
  using Failure::Failure;
};

/// Stored JSON does not have its documented form.
class CodingFailure : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace tidewrack
