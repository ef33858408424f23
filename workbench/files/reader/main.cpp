// SPDX-License-Identifier: Apache-2.0
// plime-picture-reader: reads pictures in place of the host, each in a process of its own. The host's socket
// is its file 3. It is started by the host, not by people.
#include "workbench/files/reader/LocalReader.h"
#include "workbench/files/reader/PictureProcess.h"
#include "workbench/files/reader/PictureServer.h"
#include "workbench/report/Failure.h"

#include <cstddef>
#include <exception>

#include <malloc.h>
#include <pthread.h>

namespace {

using namespace workbench;

/// The codec is loaded before the process is made. One that is missing is told by that process.
void prepare(const OpenRequest& request) {
    if (!request.needsCodec) return;
    try {
        loadPictureCodec();
    } catch (const Failure&) {
    }
}

/// What threads reserve counts against the memory that a picture may take, and there are as many as processors.
void reserveLittleForThreads() {
    constexpr int MostArenas = 2;
    constexpr std::size_t Stack = std::size_t{2} << 20;
    ::mallopt(M_ARENA_MAX, MostArenas);
    pthread_attr_t usual;
    ::pthread_attr_init(&usual);
    ::pthread_attr_setstacksize(&usual, Stack);
    ::pthread_setattr_default_np(&usual);
    ::pthread_attr_destroy(&usual);
}

} // namespace

int main() {
    try {
        reserveLittleForThreads();
        constexpr int HostsSocket = 3;
        Channel control{Descriptor(HostsSocket)};
        servePictures(control, prepare, [](const OpenRequest& request, Channel& channel) {
            servePicture(request, channel, openPictureHere);
        });
        return 0;
    } catch (const std::exception&) {
        return 1;
    }
}
