#ifndef ORVABASE_TESTS_FORKEDCHILD_H
#define ORVABASE_TESTS_FORKEDCHILD_H

#include "OXException.h"

#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `work`, which returns a text, in a process of its own, so that it may change what belongs
/// to the whole process (directory, limits, user), and returns the text. An exception of the
/// library comes back as "threw " with its class name and message; a process that ends in another
/// way as "ended with status …", which is what `waitpid` tells.
///
///     EXPECT_EQ(inForkedChild([] { return chdir("/") == 0 ? "there" : "not there"; }), "there");
template<class Work>
std::string inForkedChild(Work work) {
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        std::string text;
        try {
            text = work();
        } catch (const OXException& failure) {
            text = std::string("threw ") + failure.getClass().getString() + ": " +
                   failure.getMessage().getString();
        } catch (...) {
            text = "threw something else";
        }
        const ssize_t written = write(ends[1], text.data(), text.size());
        _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string text;
    char block[512];
    for (ssize_t n; (n = read(ends[0], block, sizeof block)) > 0;)
        text.append(block, static_cast<std::size_t>(n));
    close(ends[0]);
    int status = -1;
    if (child == -1 || waitpid(child, &status, 0) != child)
        return "no child";
    return status == 0 ? text : "ended with status " + std::to_string(status);
}

#endif
