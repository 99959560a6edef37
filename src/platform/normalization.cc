#include "platform/normalization.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>

namespace tidewrack {

std::string canonicallyComposed(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const auto* form = icu::Normalizer2::getNFCInstance(status);
  std::string composed;
  if (U_SUCCESS(status)) {
    icu::StringByteSink<std::string> sink(&composed);
    form->normalizeUTF8(0, icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink,
                        nullptr, status);
  }
  return U_SUCCESS(status) ? composed : std::string(text);
}

}  // namespace tidewrack
