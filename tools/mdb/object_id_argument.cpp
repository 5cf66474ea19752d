// Row ids from command-line object names.
#include "object_id_argument.h"

#include <cerrno>
#include <cstdlib>

namespace mdbtool {

/* The digits after the last '|' and, inside a category, after the last ',' (the row id); the
 * whole text when it has neither. Anything but a positive decimal number gives 0. */
long long RowIdOfArgument(const std::string &argument) {
    std::string::size_type cut = argument.find_last_of("|,");
    const std::string digits = cut == std::string::npos ? argument : argument.substr(cut + 1);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    errno = 0;
    long long id = strtoll(digits.c_str(), nullptr, 10);
    return errno == 0 && id > 0 ? id : 0;
}

}  // namespace mdbtool
