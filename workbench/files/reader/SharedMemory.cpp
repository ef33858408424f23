// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/SharedMemory.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/shm.h>
#include <sys/stat.h>

namespace workbench {
namespace {

[[noreturn]] void fail(const char* what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

} // namespace

SharedMemory::SharedMemory(int id, int flags) : number(id) {
    void* const place = ::shmat(id, nullptr, flags);
    if (place == reinterpret_cast<void*>(-1)) fail("shmat");
    begin = static_cast<std::byte*>(place);
}

SharedMemory SharedMemory::create(std::size_t size) {
    const int id = ::shmget(IPC_PRIVATE, size, IPC_CREAT | S_IRUSR | S_IWUSR);
    if (id < 0) fail("shmget");
    struct RemovedWithItsUsers {
        int id;
        ~RemovedWithItsUsers() { ::shmctl(id, IPC_RMID, nullptr); }
    };
    const RemovedWithItsUsers removal{id};
    return {id, SHM_RDONLY};
}

SharedMemory SharedMemory::attach(int id, std::size_t size) {
    shmid_ds state{};
    if (::shmctl(id, IPC_STAT, &state) != 0) fail("shmctl");
    if (state.shm_segsz != size) fail("shmctl", EINVAL);
    return {id, 0};
}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : number(std::exchange(other.number, -1)), begin(std::exchange(other.begin, nullptr)) {}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
    std::swap(number, other.number);
    std::swap(begin, other.begin);
    return *this;
}

SharedMemory::~SharedMemory() {
    if (begin) ::shmdt(begin);
}

} // namespace workbench
