#include "PendingRequest.h"

#include <cerrno>
#include <thread>
#include <utility>

#include "Adapter.h"
#include "FatalSignal.h"

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
void PendingRequest::interrupted(fuse_req_t request, void* self) {
  const auto pending = static_cast<PendingRequest*>(self)->shared_from_this();
  const pid_t thread = fuse_req_ctx(request)->pid;
  const auto patienceEnds = std::chrono::steady_clock::now() + interruptGrace;
  pending->adapter->interrupts.post([pending, thread, patienceEnds] {
    if (hasFatalSignal(thread)) return pending->fail(EINTR);
    // All wait equally long, so the first to be interrupted is the first to be answered.
    pending->adapter->handledInterrupts.post([pending, patienceEnds] {
      std::this_thread::sleep_until(patienceEnds);
      pending->fail(EINTR);
    });
  });
}

}  // namespace tarnel
