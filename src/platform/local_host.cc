#include "platform/local_host.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include <gio/gio.h>
#include <ifaddrs.h>
#include <netinet/in.h>

namespace tidewrack {
namespace {

using Bytes = std::span<const std::uint8_t>;
using AddressPointer = std::unique_ptr<GInetAddress, decltype(&g_object_unref)>;

AddressPointer parsed(std::string_view text) {
  const std::string withoutZone(text.substr(0, text.find('%')));  // "fe80::1%eth0"
  return {g_inet_address_new_from_string(withoutZone.c_str()), &g_object_unref};
}

Bytes bytesOf(GInetAddress* address) {
  return {g_inet_address_to_bytes(address), g_inet_address_get_native_size(address)};
}

template <std::size_t size>
bool beginsWith(Bytes bytes, const std::array<std::uint8_t, size>& prefix) {
  return std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

/// The IPv4 address that an IPv6 address stands for, or the address itself.
Bytes withoutWrapping(Bytes bytes) {
  static constexpr std::array<std::uint8_t, 12> mapped = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
  static constexpr std::array<std::uint8_t, 12> translated = {0, 0x64, 0xFF, 0x9B, 0, 0,  // RFC 6052
                                                              0, 0,    0,    0,    0, 0};
  static constexpr std::array<std::uint8_t, 2> sixToFour = {0x20, 0x02};  // RFC 3056
  if (bytes.size() != 16) {
    return bytes;
  }
  if (beginsWith(bytes, mapped) || beginsWith(bytes, translated)) {
    return bytes.subspan(12);
  }
  return beginsWith(bytes, sixToFour) ? bytes.subspan(2, 4) : bytes;
}

bool isLocalIPv4(Bytes bytes) {
  const std::uint8_t a = bytes[0];
  const std::uint8_t b = bytes[1];
  return a == 0 || a == 10 || a == 127 || (a == 100 && (b & 0xC0) == 64) || (a == 169 && b == 254) ||
         (a == 172 && (b & 0xF0) == 16) || (a == 192 && b == 168) ||
         (a == 192 && b == 0 && bytes[2] == 0) ||  // RFC 6890, among them a router of DS-Lite
         a >= 224;
}

bool isLocalAddress(Bytes address) {
  const Bytes bytes = withoutWrapping(address);
  if (bytes.size() == 4) {
    return isLocalIPv4(bytes);
  }
  const bool isGlobalUnicast = (bytes[0] & 0xE0) == 0x20;  // RFC 4291, section 2.4
  // 2001::/23: tunnels that carry other addresses, benchmarks and other protocols of their own (RFC 2928).
  const bool isOfProtocol = bytes[0] == 0x20 && bytes[1] == 0x01 && (bytes[2] & 0xFE) == 0;
  return !isGlobalUnicast || isOfProtocol;
}

Bytes bytesOf(const sockaddr* address) {
  if (address != nullptr && address->sa_family == AF_INET) {
    const auto* ipv4 = reinterpret_cast<const sockaddr_in*>(address);
    return {reinterpret_cast<const std::uint8_t*>(&ipv4->sin_addr), 4};
  }
  if (address != nullptr && address->sa_family == AF_INET6) {
    const auto* ipv6 = reinterpret_cast<const sockaddr_in6*>(address);
    return {ipv6->sin6_addr.s6_addr, 16};
  }
  return {};
}

bool isOnNetworkOf(const ifaddrs& interface, Bytes address) {
  const Bytes own = bytesOf(interface.ifa_addr);
  if (own.size() != address.size()) {
    return false;
  }
  const Bytes mask = bytesOf(interface.ifa_netmask);
  // Some tunnels have a mask without a bit; then only their own address counts.
  const bool hasMask = mask.size() == own.size() &&
                       std::any_of(mask.begin(), mask.end(), [](std::uint8_t byte) { return byte != 0; });
  for (std::size_t index = 0; index < own.size(); ++index) {
    if (((own[index] ^ address[index]) & (hasMask ? mask[index] : 0xFF)) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool isLocalHost(std::string_view host) {
  std::string name(host);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']') {
    name = name.substr(1, name.size() - 2);
  }
  while (!name.empty() && name.back() == '.') {
    name.pop_back();
  }
  if (const auto address = parsed(name)) {
    return isLocalAddress(bytesOf(address.get()));
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

bool isNeighbourAddress(std::string_view address) {
  const auto wanted = parsed(address);
  if (!wanted) {
    return false;
  }
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) {
    return true;
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
  const Bytes bytes = withoutWrapping(bytesOf(wanted.get()));
  for (const ifaddrs* interface = list; interface != nullptr; interface = interface->ifa_next) {
    if (isOnNetworkOf(*interface, bytes)) {
      return true;
    }
  }
  return false;
}

}  // namespace tidewrack
