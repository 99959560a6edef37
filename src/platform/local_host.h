#pragma once

#include <string_view>

/// What belongs to this computer and to its own network. Safe from any thread.
namespace tidewrack {

/// Whether a host is this computer or belongs to its own network: "localhost", a name without a dot, a name
/// under ".localhost", ".local", ".internal", ".lan" or ".home.arpa" (RFC 6761, 6762, 8375), or an address
/// that no public host has: loopback, link-local, private, shared (RFC 6598), unspecified or multicast, and
/// in IPv6 everything outside 2000::/3. An IPv6 address that carries an IPv4 address (mapped, translated,
/// 6to4) is what that one is. Names are not resolved.
bool isLocalHost(std::string_view host);

/// Whether an address belongs to this computer or to a network that it is part of, whatever its range: with
/// IPv6 all devices of a home have public addresses. Asks the system each time, and is true when that does
/// not answer. A text that is no address is none.
bool isNeighbourAddress(std::string_view address);

}  // namespace tidewrack
