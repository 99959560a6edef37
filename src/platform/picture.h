#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace tidewrack {

/// A decoded picture: rows from the top, four bytes a pixel (red, green, blue, opacity; not premultiplied).
struct Picture {
  int width = 0;   ///< Pixels.
  int height = 0;  ///< Pixels.
  std::vector<std::uint8_t> pixels;
};

/// Decodes the bytes of a picture file (PNG, JPEG, GIF and what else the system's loaders know; of an
/// animation the first frame). Null for anything that is no picture, or is wider or higher than 4,096 pixels.
/// Safe from any thread.
std::shared_ptr<const Picture> decodePicture(std::string_view bytes);

}  // namespace tidewrack
