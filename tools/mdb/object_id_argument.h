// Reading the object named on the command line of destroy and info: a row id ("42") or an
// object id that ends in one ("0.1.264|42", "0.1.257|3,42").
#pragma once

#include <string>

namespace mdbtool {

// The row id, or 0 when the text names none.
long long RowIdOfArgument(const std::string &argument);

}  // namespace mdbtool
