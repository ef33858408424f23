// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/PictureServer.h"

#include <cerrno>
#include <csignal>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench {
namespace {

/// A process that reads a picture.
struct Reading {
    pid_t process;
    Descriptor handle; ///< readable as soon as the process has ended
    Channel channel;   ///< its end of the conversation, once more
    bool isGivenUp = false;
};

class Server {
public:
    Server(Channel& control, const std::function<void(const OpenRequest&)>& prepare, const PictureWork& work)
        : control(control), prepare(prepare), work(work) {}

    void run() {
        for (;;) {
            std::vector<pollfd> watched{{control.descriptor(), POLLIN, 0}};
            for (const Reading& reading : readings) {
                watched.push_back({reading.handle.get(), POLLIN, 0});
                watched.push_back({reading.isGivenUp ? -1 : reading.channel.descriptor(), 0, 0});
            }
            if (::poll(watched.data(), watched.size(), -1) < 0) continue;
            std::size_t place = 1;
            for (auto reading = readings.begin(); reading != readings.end(); place += 2) {
                if ((watched[place + 1].revents & POLLHUP) != 0) {
                    reading->isGivenUp = true;
                    ::kill(reading->process, SIGKILL);
                }
                if (watched[place].revents != 0) {
                    tellEnd(*reading);
                    reading = readings.erase(reading);
                } else {
                    ++reading;
                }
            }
            if (watched[0].revents != 0 && !begin()) return;
        }
    }

private:
    /// False when nobody can ask any more.
    bool begin() {
        std::optional<Message> message = control.receive();
        if (!message) return false;
        const OpenRequest request = openRequestIn(message->bytes);
        Channel channel(std::move(message->file));
        prepare(request);
        const pid_t parent = ::getpid(), process = ::fork();
        if (process == 0) become(request, channel, parent);
        if (process < 0) return true; // the conversation ends without a word
        Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0U)));
        if (handle.get() >= 0) {
            readings.push_back({process, std::move(handle), std::move(channel), false});
            return true;
        }
        ::kill(process, SIGKILL);
        while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) continue;
        return true;
    }

    /// The process of a picture. It ends without the destructors of what it has inherited.
    [[noreturn]] void become(const OpenRequest& request, Channel& channel, pid_t parent) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) ::_exit(1);
        for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL})
            std::signal(number, SIG_DFL); // handlers of sanitizers make exit codes of signals
        readings.clear();
        control = Channel(Descriptor());
        try {
            work(request, channel);
        } catch (const std::exception&) {
            ::_exit(1);
        }
        ::_exit(0);
    }

    static void tellEnd(Reading& reading) {
        int status = 0;
        while (::waitpid(reading.process, &status, 0) < 0 && errno == EINTR) continue;
        const bool bySignal = WIFSIGNALED(status);
        const int number = bySignal ? WTERMSIG(status) : WEXITSTATUS(status);
        static_cast<void>(reading.channel.offer(MessageKind::Ended,
                                                ParcelWriter().number(bySignal).integer(number).bytes()));
    }

    Channel& control;
    const std::function<void(const OpenRequest&)>& prepare;
    const PictureWork& work;
    std::list<Reading> readings;
};

} // namespace

void servePictures(Channel& control, const std::function<void(const OpenRequest& request)>& prepare,
                   const PictureWork& work) {
    Server(control, prepare, work).run();
}

} // namespace workbench
