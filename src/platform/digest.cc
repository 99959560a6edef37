#include "platform/digest.h"

#include <memory>

#include <glib.h>

namespace tidewrack {

std::string sha256Hex(std::string_view bytes) {
  const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> checksum(g_checksum_new(G_CHECKSUM_SHA256),
                                                                        &g_checksum_free);
  g_checksum_update(checksum.get(), reinterpret_cast<const guchar*>(bytes.data()),
                    static_cast<gssize>(bytes.size()));
  return g_checksum_get_string(checksum.get());
}

}  // namespace tidewrack
