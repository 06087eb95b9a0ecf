// Unit tests of the core library; each subsystem adds its own file beside this one.
#include <gtest/gtest.h>
