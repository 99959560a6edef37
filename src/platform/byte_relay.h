#pragma once

#include <chrono>

namespace tidewrack {

/// Carries bytes between two connected sockets, both ways and in bounded memory, until both have said that
/// nothing more comes, one of them fails, or the descriptor `stop` becomes readable. When one side has said
/// so, the other is told, and has to go on sending: after `lingering` without a byte the relay ends. Both
/// sockets do not block and stay the caller's. Blocks the thread.
void relayBytes(int first, int second, int stop, std::chrono::milliseconds lingering);

}  // namespace tidewrack
