#include "database/odbc/pool.h"

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace vellum250::database::odbc {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMostIdle = 8;
constexpr std::chrono::seconds kLongest(60);
// Between the statements of one page no server is asked whether it is still there.
constexpr std::chrono::milliseconds kRest(100);

struct Idle {
  std::unique_ptr<Link> link;
  Clock::time_point since;
};

// A connection may outlive its thread's pool: one that the process keeps until it ends.
thread_local bool poolEnded = false;

// The one used last at the end.
struct Pool {
  std::vector<Idle> idle;
  ~Pool() { poolEnded = true; }
};
thread_local Pool pool;

}  // namespace

std::unique_ptr<Link> TakeLink(const ConnectionString& connectionString, SQLULEN timeout) {
  const Clock::time_point now = Clock::now();
  if (!poolEnded) {
    CloseExpired(now);
    for (size_t i = pool.idle.size(); i-- > 0;) {
      if (!pool.idle[i].link->IsFor(connectionString, timeout)) continue;
      Idle idle = std::move(pool.idle[i]);
      pool.idle.erase(pool.idle.begin() + static_cast<std::ptrdiff_t>(i));
      // Nothing has been sent yet, so that another may take the place of a dead one.
      if (idle.link->BeginAnew(now - idle.since > kRest)) return std::move(idle.link);
    }
  }
  return std::make_unique<Link>(connectionString, timeout);
}

void GiveBack(std::unique_ptr<Link> link, bool mayHoldTransaction) noexcept {
  const bool isClean = !mayHoldTransaction || link->RollBack();
  if (poolEnded) return;
  const Clock::time_point now = Clock::now();
  CloseExpired(now);
  // Where one has lost its server, so have the others.
  if (link->IsDoubtful()) {
    for (const Idle& idle : pool.idle) idle.link->Doubt();
  }
  if (!isClean) return;
  try {
    pool.idle.push_back({std::move(link), now});
  } catch (const std::bad_alloc&) {
    return;
  }
  if (pool.idle.size() > kMostIdle) pool.idle.erase(pool.idle.begin());
}

void CloseExpired(Clock::time_point now) noexcept {
  std::erase_if(pool.idle, [now](const Idle& idle) { return now - idle.since > kLongest; });
}

}  // namespace vellum250::database::odbc
