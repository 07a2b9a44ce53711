#include "WindowState.h"

#include <atomic>

namespace {
std::atomic<bool> g_maximized{false};
}

bool isMainWindowMaximized() { return g_maximized.load(std::memory_order_relaxed); }
void setMainWindowMaximized(bool maximized) { g_maximized.store(maximized, std::memory_order_relaxed); }
