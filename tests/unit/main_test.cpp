// Unit tests of the core library; each subsystem adds its own file beside this one.
#include <gtest/gtest.h>

#include "app/link.h"

// Every test runs against the wiring of the product: the one link point.
namespace {
struct Linked : ::testing::Environment {
    void SetUp() override { korvu::link_all(); }
};
const auto* linked = ::testing::AddGlobalTestEnvironment(new Linked);
} // namespace
