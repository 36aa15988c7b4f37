// The one exception type of the host library: a message fit to show the user.
#pragma once

#include <stdexcept>
#include <string>

namespace sparkhost {

class Error : public std::runtime_error {
public:
    explicit Error(const std::string &message) : std::runtime_error(message) {}
};

}  // namespace sparkhost
