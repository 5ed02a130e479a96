// Captures what the library writes to the Android log, so tests can assert on exact lines.
// Only one capture may be active at a time in a process; it restores stderr logging when it
// goes out of scope.
#pragma once

#include <string>
#include <vector>

namespace korva::test {

struct LogLine {
    int priority;
    std::string tag;
    std::string message;
};

class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    // Messages in order, optionally only those of one tag and of one priority.
    std::vector<std::string> messages(const std::string& tag = "", int priority = -1) const;
    // How many lines have exactly this message (and this tag, when one is given).
    size_t count(const std::string& message, const std::string& tag = "") const;
    bool contains(const std::string& message, const std::string& tag = "") const {
        return count(message, tag) > 0;
    }
    void clear();
};

}  // namespace korva::test
