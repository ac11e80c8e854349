#include "PendingRequest.h"

#include <cerrno>
#include <utility>

#include "Adapter.h"

namespace tarnel {

std::shared_ptr<PendingRequest> PendingRequest::make(std::shared_ptr<Adapter> session,
                                                     fuse_req_t request) {
  auto made = std::shared_ptr<PendingRequest>(new PendingRequest(std::move(session), request));
  fuse_req_interrupt_func(request, &PendingRequest::interrupted, made.get());
  return made;
}

PendingRequest::PendingRequest(std::shared_ptr<Adapter> session, fuse_req_t request)
    : adapter(std::move(session)), req(request) {}

bool PendingRequest::claim() {
  if (answered.exchange(true)) return false;
  // Waits for an interrupt that is just being delivered, which holds this object by a bare pointer.
  fuse_req_interrupt_func(req, nullptr, nullptr);
  return true;
}

void PendingRequest::fail(int error) {
  if (claim()) fuse_reply_err(req, error);
}

// Called with the request's lock held, sometimes from inside fuse_req_interrupt_func itself: a
// reply here would free the request under its caller, so another thread gives it.
void PendingRequest::interrupted(fuse_req_t, void* self) {
  auto pending = static_cast<PendingRequest*>(self)->shared_from_this();
  Adapter& session = *pending->adapter;
  session.interrupts.post([pending = std::move(pending)] { pending->fail(EINTR); });
}

}  // namespace tarnel
