#include "linux_host/watched_names.hpp"

#include <algorithm>
#include <cerrno>
#include <limits.h>
#include <unistd.h>
#include <utility>

#include "linux_host/change_notification.hpp"
#include "linux_host/counters.hpp"

namespace linux_host {

namespace {

constexpr int MostLinks = 40; ///< as many as the kernel follows
constexpr int NoWatch = -1;

constexpr std::uint32_t SelfGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t EntryReplaced = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

} // namespace

/// One element of the tree: a directory, or a link to where the name goes on.
struct WatchedNames::Place : std::enable_shared_from_this<Place> {
    Place(WatchedNames& owner, PlacePtr above, std::string_view element)
        : names(owner), parent(std::move(above)), name(element) {}
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() {
        if (parent != nullptr) {
            parent->Forget(*this);
        }
        names.ReleaseWatch(*this);
    }

    bool IsLink() const { return !target.empty(); }
    bool IsBlind() const { return !IsLink() && watch == NoWatch; }

    /// A lost place may have a successor under its name already.
    void Forget(const Place& child) {
        const auto found = children.find(child.name);
        if (found != children.end() && found->second == &child) {
            children.erase(found);
        }
    }

    std::string Path() const {
        std::size_t size = 0;
        for (const Place* place = this; place->parent != nullptr; place = place->parent.get()) {
            size += 1 + place->name.size();
        }
        std::string path(std::max<std::size_t>(size, 1), '/');
        for (const Place* place = this; place->parent != nullptr; place = place->parent.get()) {
            size -= place->name.size();
            place->name.copy(path.data() + size, place->name.size());
            --size;
        }
        return path;
    }

    WatchedNames& names;
    PlacePtr parent; ///< null for the root
    std::string name;
    std::string target; ///< of a link
    ::dev_t device = 0;
    ::ino_t inode = 0;
    int watch = NoWatch;
    bool lost = false; ///< waits only for its anchors to go
    /// Those not lost, which remove themselves; by the names that they have.
    boost::unordered_flat_map<std::string_view, Place*> children;
    boost::container::small_vector<std::uint32_t, 2> anchored; ///< numbers of anchors that hold this place
};

WatchedNames::Anchor::Anchor(Anchor&& other) noexcept
    : m_places(std::move(other.m_places)), m_number(other.m_number), m_blind(other.m_blind) {
    other.m_places.clear();
}

WatchedNames::Anchor& WatchedNames::Anchor::operator=(Anchor&& other) noexcept {
    std::swap(m_places, other.m_places);
    std::swap(m_number, other.m_number);
    std::swap(m_blind, other.m_blind);
    return *this;
}

WatchedNames::Anchor::~Anchor() {
    for (const PlacePtr& place : m_places) {
        // A number anew at its old place is there twice for a moment; which of the two goes is all the same.
        const auto found = std::find(place->anchored.begin(), place->anchored.end(), m_number);
        place->anchored.erase(found);
    }
}

bool WatchedNames::Anchor::IsFolder(const struct ::stat& status) const {
    return !m_places.empty() && m_places.back()->device == status.st_dev &&
           m_places.back()->inode == status.st_ino;
}

std::optional<WatchedNames::Attached> WatchedNames::Attach(const std::string& path, std::uint32_t number) {
    // What is not anchored goes with this vector, watches included.
    Places places;
    m_established = nullptr;
    if (!Walk(path, places) || places.back()->watch == NoWatch) {
        return std::nullopt;
    }
    Attached attached;
    // A name without links and `..` is the path that was looked at.
    if (places.size() == 1 && places.back().get() == m_established) {
        attached.look = m_look;
    }
    Anchor& anchor = attached.anchor;
    anchor.m_number = number;
    anchor.m_places.reserve(places.size());
    for (PlacePtr& place : places) {
        for (const Place* above = place.get(); above != nullptr; above = above->parent.get()) {
            anchor.m_blind = anchor.m_blind || above->IsBlind();
        }
        place->anchored.push_back(number);
        anchor.m_places.push_back(std::move(place));
    }
    return attached;
}

/// Goes the way that the kernel goes, from the root on and into each link; collects what the name depends on
/// besides the folders above. Each directory is under watch before its entry is looked at.
bool WatchedNames::Walk(std::string path, Places& places) {
    PlacePtr place = Root();
    int links = 0;
    for (std::size_t begin = 0; place != nullptr && begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view element = std::string_view(path).substr(begin, end - begin);
        begin = end + 1;
        if (element.empty() || element == ".") {
            continue;
        }
        if (element == "..") {
            // The name still needs the folder that it leaves here.
            places.push_back(place);
            place = place->parent != nullptr ? place->parent : place;
            continue;
        }
        PlacePtr next = Child(place, element);
        if (next == nullptr || !next->IsLink()) {
            place = std::move(next);
            continue;
        }
        if (++links > MostLinks) {
            return false;
        }
        place = next->target.starts_with('/') ? Root() : place;
        path = next->target + "/" + path.substr(std::min(begin, path.size()));
        begin = 0;
        places.push_back(std::move(next));
    }
    places.push_back(place);
    return place != nullptr;
}

WatchedNames::PlacePtr WatchedNames::Root() {
    PlacePtr root = m_root.lock();
    if (root == nullptr) {
        root = std::make_shared<Place>(*this, nullptr, "");
        m_root = root;
        if (!Establish(*root)) {
            return nullptr;
        }
    }
    return root;
}

WatchedNames::PlacePtr WatchedNames::Child(const PlacePtr& parent, std::string_view name) {
    const auto found = parent->children.find(name);
    if (found != parent->children.end()) {
        return found->second->shared_from_this();
    }
    PlacePtr child = std::make_shared<Place>(*this, parent, name);
    if (!Establish(*child)) {
        return nullptr;
    }
    parent->children.emplace(child->name, child.get());
    return child;
}

/// Takes the watch of a new place and finds out what stands there.
bool WatchedNames::Establish(Place& place) {
    const std::string path = place.Path();
    const int watch = AddWatch(path);
    if (watch >= 0) {
        place.watch = watch; // first: from here on the watch goes with its place
        m_owners[watch].push_back(&place);
        CountersInForce().watches = m_owners.size();
    } else if (watch != -ENOTDIR && watch != -EACCES) {
        // No directory may be a link, and one that may not be read can still be gone through.
        return false;
    }
    ++CountersInForce().systemCalls;
    if (::lstat(path.c_str(), &m_look) != 0) {
        return false;
    }
    m_established = &place;
    place.device = m_look.st_dev;
    place.inode = m_look.st_ino;
    if (S_ISLNK(m_look.st_mode) && watch == -ENOTDIR) {
        char target[PATH_MAX];
        ++CountersInForce().systemCalls;
        const ::ssize_t length = ::readlink(path.c_str(), target, sizeof(target));
        place.target.assign(target, length > 0 ? static_cast<std::size_t>(length) : 0);
        return place.IsLink();
    }
    return S_ISDIR(m_look.st_mode) && watch != -ENOTDIR;
}

int WatchedNames::AddWatch(const std::string& path) {
    const int watch = m_inotify.Add(path);
    if (watch >= 0 && !m_owners.contains(watch) && m_owners.size() >= FaultsInForce().mostWatches) {
        m_inotify.Remove(watch); // the number was new, so nobody else has it
        return -ENOSPC;
    }
    return watch;
}

void WatchedNames::ReleaseWatch(Place& place) {
    if (place.watch == NoWatch) {
        return;
    }
    const auto found = m_owners.find(place.watch);
    if (found != m_owners.end()) {
        auto& owners = found->second;
        owners.erase(std::remove(owners.begin(), owners.end(), &place), owners.end());
        // Removing a watch deafens every owner, so only the last may.
        if (!owners.empty()) {
            return;
        }
        m_owners.erase(found);
    }
    m_inotify.Remove(place.watch);
    CountersInForce().watches = m_owners.size();
}

bool WatchedNames::Take(int milliseconds) {
    const InotifyInstance::News news =
        m_inotify.Take(milliseconds, [this](const ::inotify_event& event) { Apply(event); });
    if (news.overflow) {
        LoseAll();
    }
    return news.mounts;
}

void WatchedNames::Apply(const ::inotify_event& event) {
    const auto found = m_owners.find(event.wd);
    if (found == m_owners.end()) {
        return; // an echo of a watch that was given back
    }
    // Of several owners some may be lost already: those of a name from which the directory was moved.
    for (Place* place : found->second) {
        if ((event.mask & SelfGone) != 0) {
            Lose(*place);
        } else if (!place->lost) {
            Tell(*place, event);
        }
    }
    if ((event.mask & IN_IGNORED) != 0) {
        ForgetWatch(event.wd);
    }
}

/// The kernel has given the watch up by itself; it counts no longer, however long its places stay.
void WatchedNames::ForgetWatch(int watch) {
    const auto found = m_owners.find(watch);
    for (Place* place : found->second) {
        place->watch = NoWatch;
    }
    m_owners.erase(found);
    CountersInForce().watches = m_owners.size();
}

void WatchedNames::Tell(const Place& place, const ::inotify_event& event) {
    for (const std::uint32_t number : place.anchored) {
        m_listener.Changed(number);
    }
    if ((event.mask & EntryReplaced) != 0 && event.len > 0) {
        const auto child = place.children.find(std::string_view(event.name));
        if (child != place.children.end()) {
            Lose(*child->second);
        }
    }
}

/// Takes a place and what lies beneath it out of the tree, for a later name to find none. Only anchors free
/// places, so that events are applied to places that stay.
void WatchedNames::Lose(Place& place) {
    if (place.parent != nullptr) {
        place.parent->Forget(place);
    } else {
        m_root.reset();
    }
    LoseBeneath(place);
}

void WatchedNames::LoseBeneath(Place& place) {
    if (std::exchange(place.lost, true)) {
        return;
    }
    for (const std::uint32_t number : place.anchored) {
        m_listener.Lost(number);
    }
    for (const auto& [name, child] : place.children) {
        LoseBeneath(*child);
    }
}

void WatchedNames::LoseAll() {
    if (const PlacePtr root = m_root.lock()) {
        Lose(*root);
    }
}

} // namespace linux_host
