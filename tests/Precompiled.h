// SPDX-License-Identifier: MIT
#pragma once

// What nearly every test includes: compiled once per test program. Tests still include what they use.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
