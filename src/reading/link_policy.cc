#include "reading/link_policy.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <string>

#include <gio/gio.h>

#include "platform/local_host.h"

namespace tidewrack {
namespace {

std::string asciiLowercase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  return result;
}

std::string schemeOf(std::string_view url) {
  const auto colon = url.find(':');
  return colon == std::string_view::npos ? std::string() : asciiLowercase(url.substr(0, colon));
}

}  // namespace

bool mayOpenOutside(std::string_view url) {
  const std::string scheme = schemeOf(url);
  return scheme == "http" || scheme == "https" || scheme == "mailto";
}

bool mayLoad(std::string_view url) {
  const std::string scheme = schemeOf(url);
  if (scheme == "about" || scheme == "data" || scheme == "cid") {
    return true;
  }
  if (scheme != "http" && scheme != "https") {
    return false;
  }
  const std::unique_ptr<GUri, decltype(&g_uri_unref)> parsed(
      g_uri_parse(std::string(url).c_str(), G_URI_FLAGS_PARSE_RELAXED, nullptr), &g_uri_unref);
  const char* host = parsed ? g_uri_get_host(parsed.get()) : nullptr;
  return host != nullptr && !isLocalHost(host);
}

}  // namespace tidewrack
