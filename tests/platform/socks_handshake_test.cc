#include "platform/socks_handshake.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

using namespace std::string_literals;
using State = SocksHandshake::State;

const std::string greeting = "\x05\x01\x00"s;
const std::string accepted = "\x05\x00"s;

std::string request(const std::string& target, char command = 1) {
  return "\x05"s + command + "\0"s + target;
}

// Hands bytes over as they would arrive, never more than wanted; gives all answers.
std::string feed(SocksHandshake& handshake, std::string_view bytes) {
  std::string answers;
  while (!bytes.empty() && handshake.state() == State::open) {
    const auto part = bytes.substr(0, handshake.wanted());
    answers += handshake.take(part);
    bytes.remove_prefix(part.size());
  }
  return answers;
}

std::string replyTo(const std::string& target, char command = 1) {
  SocksHandshake handshake;
  const std::string answers = feed(handshake, greeting + request(target, command));
  EXPECT_EQ(handshake.state(), State::failed);
  EXPECT_EQ(handshake.host(), "");
  EXPECT_TRUE(answers.starts_with(accepted));
  return answers.substr(accepted.size());
}

TEST(SocksHandshakeTest, ANameIsHandedOverAsItStands) {
  SocksHandshake handshake;
  EXPECT_EQ(feed(handshake, greeting + request("\x03\x0Etracker.Ex_a-m\x01\xBB"s)), accepted);
  EXPECT_EQ(handshake.state(), State::complete);
  EXPECT_EQ(handshake.host(), "tracker.Ex_a-m");
  EXPECT_EQ(handshake.port(), 443);
}

TEST(SocksHandshakeTest, AnIPv4AddressIsATarget) {
  SocksHandshake handshake;
  feed(handshake, greeting + request("\x01\x5D\xB8\xD8\x22\x00\x50"s));
  EXPECT_EQ(handshake.host(), "93.184.216.34");
  EXPECT_EQ(handshake.port(), 80);
}

TEST(SocksHandshakeTest, AnIPv6AddressIsATarget) {
  SocksHandshake handshake;
  feed(handshake, greeting + request("\x04\x26\x06\x47\0\0\0\0\0\0\0\0\0\0\0\x11\x11\x1F\x90"s));
  EXPECT_EQ(handshake.host(), "2606:4700::1111");
  EXPECT_EQ(handshake.port(), 8080);
}

TEST(SocksHandshakeTest, BytesMayComeOneByOne) {
  SocksHandshake handshake;
  const std::string bytes = greeting + request("\x03\x03"s + "a.b\x01\xBB"s);
  std::string answers;
  for (const char byte : bytes) {
    EXPECT_EQ(handshake.state(), State::open);
    answers += handshake.take({&byte, 1});
  }
  EXPECT_EQ(answers, accepted);
  EXPECT_EQ(handshake.state(), State::complete);
  EXPECT_EQ(handshake.host(), "a.b");
}

TEST(SocksHandshakeTest, WantsNoByteThatBelongsToTheConnection) {
  SocksHandshake handshake;
  EXPECT_EQ(handshake.wanted(), 2U);
  handshake.take("\x05\x02"s);
  EXPECT_EQ(handshake.wanted(), 2U);
  EXPECT_EQ(handshake.take("\x00\x02"s), accepted);
  EXPECT_EQ(handshake.wanted(), 5U);
  handshake.take("\x05\x01\x00\x03\x03"s);
  EXPECT_EQ(handshake.wanted(), 5U);
  handshake.take("a.b\x00\x50GET / HTTP/1.1"s);
  EXPECT_EQ(handshake.state(), State::complete);
  EXPECT_EQ(handshake.wanted(), 0U);
  EXPECT_EQ(handshake.port(), 80);
}

TEST(SocksHandshakeTest, AClientThatWantsAPasswordIsToldThatThereIsNone) {
  for (const std::string& offered : {"\x05\x01\x02"s, "\x05\x00"s, "\x05\x02\x01\x02"s}) {
    SocksHandshake handshake;
    EXPECT_EQ(feed(handshake, offered), "\x05\xFF"s);
    EXPECT_EQ(handshake.state(), State::failed);
  }
}

TEST(SocksHandshakeTest, OtherProtocolsAreAnsweredNothing) {
  for (const std::string& bytes : {"GET / HTTP/1.1\r\n\r\n"s, "\x04\x01\x00\x50\x7F\x00\x00\x01\x00"s,
                                   "\x16\x03\x01\x02\x00"s, "\0\0"s}) {
    SocksHandshake handshake;
    EXPECT_EQ(feed(handshake, bytes), "");
    EXPECT_EQ(handshake.state(), State::failed);
  }
  SocksHandshake handshake;
  EXPECT_EQ(feed(handshake, greeting + "GET / HTTP/1.1"), accepted);
  EXPECT_EQ(handshake.state(), State::failed);
}

TEST(SocksHandshakeTest, OnlyConnectIsOffered) {
  for (const char command : {0, 2, 3, 9}) {
    EXPECT_EQ(replyTo("\x01\x5D\xB8\xD8\x22\x00\x50"s, command), socksReply(SocksReply::commandNotSupported));
  }
}

TEST(SocksHandshakeTest, AnUnknownKindOfAddressIsRefused) {
  EXPECT_EQ(replyTo("\x02\x00"s), socksReply(SocksReply::addressTypeNotSupported));
}

TEST(SocksHandshakeTest, WhatIsNoNameIsRefused) {
  for (const std::string& name : {"\0"s, "\x03"s + "a b"s, "\x03"s + "a\0b"s, "\x03"s + "a/b"s,
                                  "\x05"s + "[::1]"s, "\x02\xC3\xA4"s, "\x03"s + "a%b"s}) {
    EXPECT_EQ(replyTo("\x03"s + name + "\x00\x50"s), socksReply(SocksReply::generalFailure));
  }
}

TEST(SocksHandshakeTest, PortZeroIsRefused) {
  EXPECT_EQ(replyTo("\x03\x03"s + "a.b\0\0"s), socksReply(SocksReply::generalFailure));
}

TEST(SocksHandshakeTest, NothingIsTakenAfterTheEnd) {
  SocksHandshake handshake;
  feed(handshake, "GET");
  EXPECT_EQ(handshake.take(greeting), "");
  EXPECT_EQ(handshake.state(), State::failed);
  EXPECT_EQ(handshake.wanted(), 0U);
}

TEST(SocksReplyTest, HasTenBytes) {
  EXPECT_EQ(socksReply(SocksReply::hostUnreachable), "\x05\x04\0\x01\0\0\0\0\0\0"s);
}

}  // namespace
}  // namespace tidewrack
