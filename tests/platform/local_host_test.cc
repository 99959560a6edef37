#include "platform/local_host.h"

#include <memory>
#include <string>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <netinet/in.h>

namespace tidewrack {
namespace {

TEST(IsLocalHost, NeighbouringRangesAreNotLocal) {
  for (const char* host :
       {"172.15.0.1", "172.32.0.1", "192.167.1.1", "192.0.1.1", "100.63.0.1", "100.128.0.1", "11.0.0.1",
        "223.255.255.255", "2606:4700::1111", "[2606:4700::1111]", "2001:200::1", "3fff::1", "example.org",
        "localhost.example.org", "local.example"}) {
    EXPECT_FALSE(isLocalHost(host)) << host;
  }
}

TEST(IsLocalHost, AddressesThatNoPublicHostHasAreLocal) {
  for (const char* host : {"127.0.0.1", "0.0.0.0", "10.0.0.1", "100.64.0.1", "169.254.169.254", "172.16.0.1",
                           "192.168.1.1", "192.0.0.1", "224.0.0.251", "255.255.255.255", "::", "::1", "[::1]",
                           "fe80::1", "fe80::1%eth0", "fec0::1", "fc00::1", "fd12:3456::1", "ff02::fb"}) {
    EXPECT_TRUE(isLocalHost(host)) << host;
  }
}

TEST(IsLocalHost, AnIPv6AddressIsWhatTheIPv4AddressInItIs) {
  for (const char* host : {"::ffff:127.0.0.1", "::ffff:c0a8:101", "64:ff9b::10.0.0.1", "2002:7f00:1::1",
                           "2002:c0a8:101::", "::127.0.0.1"}) {
    EXPECT_TRUE(isLocalHost(host)) << host;
  }
  for (const char* host : {"::ffff:93.184.216.34", "64:ff9b::5db8:d822", "2002:5db8:d822::1"}) {
    EXPECT_FALSE(isLocalHost(host)) << host;
  }
}

TEST(IsLocalHost, TunnelsAndLocalTranslationAreLocal) {
  for (const char* host : {"2001::1", "2001:0:5db8:d822::1", "2001:2::1", "64:ff9b:1::5db8:d822", "100::1"}) {
    EXPECT_TRUE(isLocalHost(host)) << host;
  }
}

TEST(IsLocalHost, NamesOfTheOwnNetworkAreLocal) {
  for (const char* host : {"localhost", "LOCALHOST.", "a.localhost", "printer", "nas.local", "db.internal",
                           "box.lan", "x.home.arpa", "0x7f.1", "127.1", "2130706433", ""}) {
    EXPECT_TRUE(isLocalHost(host)) << host;
  }
}

TEST(IsNeighbourAddress, TheAddressesOfThisComputerAreNeighbours) {
  ifaddrs* list = nullptr;
  ASSERT_EQ(getifaddrs(&list), 0);
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
  int count = 0;
  for (const ifaddrs* interface = list; interface != nullptr; interface = interface->ifa_next) {
    if (interface->ifa_addr == nullptr || interface->ifa_addr->sa_family != AF_INET) {
      continue;
    }
    char text[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(interface->ifa_addr)->sin_addr, text,
              sizeof text);
    EXPECT_TRUE(isNeighbourAddress(text)) << text;
    EXPECT_TRUE(isNeighbourAddress(std::string("::ffff:") + text)) << text;
    ++count;
  }
  EXPECT_GE(count, 1);
}

TEST(IsNeighbourAddress, TheWholeNetworkOfAnInterfaceIsNear) {
  EXPECT_TRUE(isNeighbourAddress("127.200.3.4"));  // of the loopback interface, 127.0.0.0/8
}

TEST(IsNeighbourAddress, OtherNetworksAndNamesAreNot) {
  for (const char* address : {"93.184.216.34", "2606:4700::1111", "example.org", "localhost", ""}) {
    EXPECT_FALSE(isNeighbourAddress(address)) << address;
  }
}

}  // namespace
}  // namespace tidewrack
