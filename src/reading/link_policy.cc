#include "reading/link_policy.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <string>

#include <gio/gio.h>

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

bool isLocalIPv4(const std::uint8_t* bytes) {
  const std::uint8_t a = bytes[0];
  const std::uint8_t b = bytes[1];
  return a == 0 || a == 10 || a == 127 || (a == 100 && (b & 0xC0) == 64) || (a == 169 && b == 254) ||
         (a == 172 && (b & 0xF0) == 16) || (a == 192 && b == 168) || a >= 224;
}

bool isLocalAddress(GInetAddress* address) {
  const std::uint8_t* bytes = g_inet_address_to_bytes(address);
  if (g_inet_address_get_family(address) == G_SOCKET_FAMILY_IPV4) {
    return isLocalIPv4(bytes);
  }
  // ::ffff:0:0/96 and the translation prefix 64:ff9b::/96 carry an IPv4 address in their last four bytes.
  static constexpr std::array<std::uint8_t, 12> mapped = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
  static constexpr std::array<std::uint8_t, 12> translated = {0, 0x64, 0xFF, 0x9B, 0, 0, 0, 0, 0, 0, 0, 0};
  if (std::equal(mapped.begin(), mapped.end(), bytes) ||
      std::equal(translated.begin(), translated.end(), bytes)) {
    return isLocalIPv4(bytes + 12);
  }
  const bool uniqueLocal = (bytes[0] & 0xFE) == 0xFC;  // RFC 4193
  return uniqueLocal || g_inet_address_get_is_any(address) || g_inet_address_get_is_loopback(address) ||
         g_inet_address_get_is_link_local(address) || g_inet_address_get_is_site_local(address) ||
         g_inet_address_get_is_multicast(address);
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

bool isLocalHost(std::string_view host) {
  std::string name = asciiLowercase(host);
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']') {
    name = name.substr(1, name.size() - 2);
  }
  while (!name.empty() && name.back() == '.') {
    name.pop_back();
  }
  const std::unique_ptr<GInetAddress, decltype(&g_object_unref)> address(
      g_inet_address_new_from_string(name.substr(0, name.find('%')).c_str()), &g_object_unref);
  if (address) {
    return isLocalAddress(address.get());
  }
  if (name.find('.') == std::string::npos) {
    return true;  // "localhost", a neighbour's name, a number, or nothing at all
  }
  if (name.find_first_not_of("0123456789abcdefx.") == std::string::npos &&
      std::isdigit(static_cast<unsigned char>(name[name.rfind('.') + 1])) != 0) {
    return true;  // an unusual spelling of an IPv4 address, such as "0x7f.1"
  }
  static constexpr std::array<std::string_view, 5> localDomains = {".localhost", ".local", ".internal",
                                                                   ".lan", ".home.arpa"};
  return std::any_of(localDomains.begin(), localDomains.end(), [&](std::string_view domain) {
    return name.size() > domain.size() && name.ends_with(domain);
  });
}

}  // namespace tidewrack
