#pragma once

#include <string>

namespace daywyn {

// The shortest text that reads back as exactly the same double, always with a
// fractional part or an exponent: 784111800 -> "784111800.0", 0.1 -> "0.1".
std::string shortestDoubleText(double value);

} // namespace daywyn
