#ifndef ORVABASE_TESTS_FORKED_H
#define ORVABASE_TESTS_FORKED_H

#include "OXException.h"

#include <cstddef>
#include <exception>
#include <string>

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `action` in a child process, for what changes the process as a whole (the environment, the
/// directory, the user), and returns the text that `action` returns there.
///
/// The child ends without running the parent's destructors. An exception or an unusual end of the
/// child becomes a text that begins with "exception" or "ended".
///
///     EXPECT_EQ("C", inChild([] {
///         OCEnvironmentVariable("LANG").setValue("C");
///         return std::string(getenv("LANG"));
///     }));
template<class Action>
std::string inChild(Action action) {
    int ends[2];
    if (pipe(ends) != 0)
        return "ended: no pipe";
    const pid_t child = fork();
    if (child == 0) {
        std::string text;
        try {
            text = action();
        } catch (const OXException& failure) {
            text = std::string("exception: ") + failure.getClass().getString() + ": " +
                   failure.getMessage().getString();
        } catch (const std::exception& failure) {
            text = std::string("exception: ") + failure.what();
        } catch (...) {
            text = "exception";
        }
        std::size_t written = 0;
        while (written < text.size()) {
            const ssize_t count = write(ends[1], text.data() + written, text.size() - written);
            if (count <= 0)
                _exit(2);
            written += static_cast<std::size_t>(count);
        }
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(ends[0], buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
        return "ended: status " + std::to_string(status) + " " + text;
    return text;
}

#endif
