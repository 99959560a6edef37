#pragma once

namespace tidewrack::ui {

/// Loads the web engine, once. It is as large as everything else together, so a program that is built for it
/// (cmake/TidewrackLazyWebKit.cmake) starts without it; otherwise it is there from the start and this does
/// nothing. Must have succeeded before the first call into the engine. False when it is not installed.
/// Main thread only.
bool loadWebLibrary();

/// Reads the engine's files ahead, so that the first page need not wait for them. From any thread.
void prefetchWebLibrary();

}  // namespace tidewrack::ui
