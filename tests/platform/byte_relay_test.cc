#include "platform/byte_relay.h"

#include <chrono>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "support/sockets.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;

/// Two ends that a relay connects.
class ByteRelay : public testing::Test {
 protected:
  ByteRelay() {
    makePair(left_, innerLeft_);
    makePair(right_, innerRight_);
  }
  ~ByteRelay() override {
    eventfd_write(stop_.number(), 1);
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  void run(std::chrono::milliseconds lingering = 20s) {
    thread_ = std::thread([this, lingering] {
      relayBytes(innerLeft_.number(), innerRight_.number(), stop_.number(), lingering);
      innerLeft_.close();
      innerRight_.close();
    });
  }
  void stop() { eventfd_write(stop_.number(), 1); }

  TestSocket left_{-1};
  TestSocket right_{-1};

 private:
  static void makePair(TestSocket& outer, TestSocket& inner) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    outer = TestSocket(ends[0]);
    inner = TestSocket(ends[1]);
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
  }

  TestSocket innerLeft_{-1};
  TestSocket innerRight_{-1};
  Descriptor stop_{::eventfd(0, EFD_CLOEXEC)};
  std::thread thread_;
};

TEST_F(ByteRelay, BytesGoBothWays) {
  run();
  left_.send("question");
  EXPECT_EQ(right_.receive(8), "question");
  right_.send("answer");
  EXPECT_EQ(left_.receive(6), "answer");
}

TEST_F(ByteRelay, ManyBytesArriveInOrderAtASlowReader) {
  run();
  std::string sent;
  for (int number = 0; sent.size() < 5'000'000; ++number) {
    sent += std::to_string(number) + ' ';
  }
  std::thread writer([&] {
    left_.send(sent);
    left_.finish();
  });
  EXPECT_TRUE(right_.receive(sent.size()) == sent);
  EXPECT_TRUE(right_.isClosedByTheOther());
  writer.join();
}

TEST_F(ByteRelay, AnAnswerStillComesWhenTheQuestionHasEnded) {
  run();
  left_.send("question");
  left_.finish();
  EXPECT_EQ(right_.receive(100), "question");
  right_.send("answer");
  right_.finish();
  EXPECT_EQ(left_.receive(100), "answer");
}

TEST_F(ByteRelay, EndsWhenASideIsGone) {
  run();
  left_.close();
  right_.send("into the void");
  EXPECT_TRUE(right_.isClosedByTheOther());
}

TEST_F(ByteRelay, DoesNotWaitForeverForASideThatNeverEnds) {
  run(30ms);
  left_.finish();
  EXPECT_TRUE(right_.isClosedByTheOther());
  EXPECT_TRUE(left_.isClosedByTheOther());
}

TEST_F(ByteRelay, EndsWhenItIsTold) {
  run();
  left_.send("question");
  EXPECT_EQ(right_.receive(8), "question");
  stop();
  EXPECT_TRUE(left_.isClosedByTheOther());
  EXPECT_TRUE(right_.isClosedByTheOther());
}

}  // namespace
}  // namespace tidewrack
