#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstdint>
#include <cstdlib>

namespace tosvar {

// A shared-memory segment attached to us and to the server, kept for later
// grabs: making one costs more than the grab itself.
class SharedSegment {
public:
    SharedSegment(xcb_connection_t* xcb, std::size_t bytes) : xcb_(xcb), capacity_(bytes) {
        id_ = ::shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        if (id_ < 0) return;
        void* address = ::shmat(id_, nullptr, 0);
        ::shmctl(id_, IPC_RMID, nullptr); // freed once both sides detach
        if (address == reinterpret_cast<void*>(-1)) return;
        data_ = static_cast<std::uint8_t*>(address);
        seg_ = xcb_generate_id(xcb_);
        xcb_generic_error_t* error = xcb_request_check(xcb_, xcb_shm_attach_checked(xcb_, seg_, static_cast<std::uint32_t>(id_), 0));
        attached_ = error == nullptr;
        std::free(error);
    }
    ~SharedSegment() {
        if (attached_) xcb_shm_detach(xcb_, seg_);
        if (data_) ::shmdt(data_);
    }
    SharedSegment(const SharedSegment&) = delete;
    SharedSegment& operator=(const SharedSegment&) = delete;

    bool usable() const { return attached_; }
    std::size_t capacity() const { return capacity_; }
    xcb_shm_seg_t segment() const { return seg_; }
    const std::uint8_t* data() const { return data_; }

private:
    xcb_connection_t* xcb_;
    std::size_t capacity_;
    int id_ = -1;
    std::uint8_t* data_ = nullptr;
    xcb_shm_seg_t seg_ = 0;
    bool attached_ = false;
};

} // namespace tosvar
