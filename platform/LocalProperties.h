// Property values for test and fuzz programs, kept in the process: the library's property reads
// see them before anything the property service holds, on the host and on a device alike.
#pragma once

#include <string>

namespace korva {

void setLocalProperty(const std::string& key, const std::string& value);

}  // namespace korva
