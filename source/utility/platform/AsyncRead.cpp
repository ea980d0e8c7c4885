#include "source/utility/platform/AsyncRead.h"

#include <aio.h>
#include <cassert>
#include <cerrno>
#include <fcntl.h>
#include <new>

namespace kst::platform {

void FreeAligned::operator()(std::byte* bytes) const noexcept {
    ::operator delete[](bytes, std::align_val_t{direct_alignment});
}

AlignedBuffer allocate_aligned(std::size_t size) {
    if (size == 0)
        return {};
    return AlignedBuffer(static_cast<std::byte*>(::operator new[](size, std::align_val_t{direct_alignment})));
}

AsyncFile::AsyncFile() : request_(std::make_unique<aiocb>()) {}

AsyncFile::~AsyncFile() {
    std::size_t ignored = 0;
    if (in_flight_)
        complete(ignored);
}

OpenResult AsyncFile::open(const std::string& path, Caching caching) {
    assert(!in_flight_);
    return file_.open(path, Disposition::open_existing, Access::read, caching);
}

bool AsyncFile::is_open() const {
    return file_.is_open();
}

std::int64_t AsyncFile::size() const {
    return file_.size();
}

bool AsyncFile::begin(std::int64_t offset, std::byte* buffer, std::size_t count) {
    assert(!in_flight_);
    *request_ = {};
    request_->aio_fildes = file_.handle();
    request_->aio_offset = offset;
    request_->aio_buf = buffer;
    request_->aio_nbytes = count;
    request_->aio_sigevent.sigev_notify = SIGEV_NONE;
    in_flight_ = ::aio_read(request_.get()) == 0;
    return in_flight_;
}

bool AsyncFile::is_done() const {
    return ::aio_error(request_.get()) != EINPROGRESS;
}

bool AsyncFile::complete(std::size_t& done) {
    assert(in_flight_);
    const aiocb* const waited_for = request_.get();
    while (!is_done())
        ::aio_suspend(&waited_for, 1, nullptr);
    in_flight_ = false;
    const int error = ::aio_error(waited_for);
    const ssize_t bytes = ::aio_return(request_.get());
    if (error == EINVAL) {
        // A disk may take a file for direct transfers and then want a larger alignment than ours.
        const int flags = ::fcntl(file_.handle(), F_GETFL);
        return flags >= 0 && ::fcntl(file_.handle(), F_SETFL, flags & ~O_DIRECT) == 0 &&
               file_.read_at(waited_for->aio_offset, const_cast<void*>(waited_for->aio_buf), waited_for->aio_nbytes,
                             done);
    }
    done = bytes < 0 ? 0 : static_cast<std::size_t>(bytes);
    return error == 0 && bytes >= 0;
}

} // namespace kst::platform
