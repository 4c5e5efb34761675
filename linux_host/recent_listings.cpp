#include "linux_host/recent_listings.hpp"

#include <boost/container_hash/hash.hpp>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace linux_host {

namespace {

using Nanoseconds = std::int64_t;
constexpr Nanoseconds Second = 1'000'000'000;

/// Times move on by the kernel's tick, of at most 10 ms, or by what the file system stores, where whole
/// numbers of seconds mean up to two.
constexpr Nanoseconds FineGrain = Second / 100;
constexpr Nanoseconds CoarseGrain = 2 * Second;

constexpr std::size_t MostRemembered = 8192;

Nanoseconds Count(const ::timespec& time) { return time.tv_sec * Second + time.tv_nsec; }

struct Look {
    Nanoseconds modified;
    Nanoseconds changed; ///< moves with every change of the folder, and nobody can set it back
    bool young;
};

using Listings = boost::unordered_flat_map<std::pair<::dev_t, ::ino_t>, Look>;

Listings& Remembered() {
    static auto& listings = *new Listings;
    return listings;
}

} // namespace

void RememberListing(int directory) {
    // In this order: what changes after the look carries a time that is not before this one.
    ::timespec now{};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    struct ::stat status {};
    if (::fstat(directory, &status) != 0) {
        return;
    }
    // Only folders that are never watched stay here. To forget one too many costs a reload, nothing else.
    if (Remembered().size() >= MostRemembered) {
        Remembered().clear();
    }
    const Nanoseconds changed = Count(status.st_ctim);
    const Nanoseconds grain = status.st_ctim.tv_nsec == 0 ? CoarseGrain : FineGrain;
    // Also a time in the future, from a clock set back, is none that a change would leave today.
    const bool young = std::abs(Count(now) - changed) <= grain;
    Remembered()[{status.st_dev, status.st_ino}] = {Count(status.st_mtim), changed, young};
}

bool IsAsListed(const struct ::stat& status) {
    const auto found = Remembered().find({status.st_dev, status.st_ino});
    if (found == Remembered().end()) {
        return false;
    }
    const Look look = found->second;
    Remembered().erase(found);
    return !look.young && look.modified == Count(status.st_mtim) && look.changed == Count(status.st_ctim);
}

} // namespace linux_host
