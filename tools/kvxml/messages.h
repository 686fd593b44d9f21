/// What the user is told on standard error, and the statuses that the command ends with.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

constexpr int kDone = 0;
constexpr int kRefused = 1;     // a document or a file
constexpr int kWrongUsage = 2;  // of the command line

/// A failure that is reported in one line with the name of the file that it is about.
class CFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    /// What was attempted, if that needs saying, and the host's text for the error number.
    CFailure(const std::string& attempt, int error);
};

/// The text in one line that terminals show as it is: line ends become "; ", and control characters, those
/// that turn the direction of writing or are not seen, and bytes that are no UTF-8 are escaped. Of a long
/// text the beginning and the end are left.
std::string Printable(std::string_view text);

/// Prints "kvxml: " and the message, which is made printable, in a line of its own.
void Say(std::string_view message);
/// The same about a file.
void Say(const std::string& fileName, std::string_view message);

/// Says what the exception that is being handled is about.
void SayException(const std::string& fileName);
/// The same where its message names the file.
void SayException();

/// Runs `action`; a failure is reported under the name of the file it is about.
template <class Action>
bool Succeeds(const std::string& fileName, Action action) {
    try {
        action();
        return true;
    } catch (...) {
        SayException(fileName);
        return false;
    }
}

/// Prints what was asked for, such as help, on standard output; returns the status to end with.
int Print(std::string_view text);

}  // namespace tool
