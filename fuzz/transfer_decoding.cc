#include "mail/transfer_decoding.h"

#include "fuzz/fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidewrack;
  const auto bytes = fuzz::bytesOf(data, size);
  for (const auto encoding :
       {TransferEncoding::identity, TransferEncoding::base64, TransferEncoding::quotedPrintable}) {
    fuzz::require(decodeTransfer(bytes, encoding).size() == decodedSize(bytes, encoding));
  }
  fuzz::require(decodeBase64(encodeBase64(bytes)) == bytes);
  return 0;
}
