// The captured messages of one tag at one priority, in order.
#pragma once

#include <string>
#include <vector>

#include "LogCapture.h"

namespace korva::test {

inline std::vector<std::string> linesAt(const LogCapture& log, const std::string& tag,
                                        int priority) {
    std::vector<std::string> out;
    for (const LogLine& line : log.lines()) {
        if (line.tag == tag && line.priority == priority) {
            out.push_back(line.message);
        }
    }
    return out;
}

}  // namespace korva::test
