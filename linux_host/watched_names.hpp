#pragma once

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

#include "linux_host/inotify_instance.hpp"

/// @file
/// Names under watch. A watch follows the directory wherever it is moved, while a caller means whatever
/// stands at a name; so every directory that a name leads through is watched too, and an event about the next
/// element there means that the name is lost.

namespace linux_host {

/// What an anchored name has to be told. The number is the one given to WatchedNames::Attach.
class NameListener {
  public:
    virtual ~NameListener() = default;
    /// Something happened in the folder.
    virtual void Changed(std::uint32_t number) = 0;
    /// The name leads elsewhere or nowhere; its anchor tells nothing more.
    virtual void Lost(std::uint32_t number) = 0;
};

/// The directories and links that anchored names lead through, as a tree of real folders: two names of one
/// folder share its place. Invariants:
/// 1. A place lives as long as an anchor or a place beneath it holds it.
/// 2. Each watch has the places that own it, at least one, and ends with the last of them.
/// 3. A place found from the root was true when it was made, and nothing but an unread event, a mount or a
///    blind place above it can have changed that.
class WatchedNames {
  public:
    explicit WatchedNames(NameListener& listener) : m_listener(listener) {}
    WatchedNames(const WatchedNames&) = delete;
    WatchedNames& operator=(const WatchedNames&) = delete;

  private:
    struct Place;
    using PlacePtr = std::shared_ptr<Place>;
    using Places = boost::container::small_vector<PlacePtr, 1>;

  public:
    /// Holds the watches that one name needs; given back in O(depth) when it goes. At most one per number.
    class Anchor {
      public:
        Anchor() = default;
        Anchor(Anchor&& other) noexcept;
        Anchor& operator=(Anchor&& other) noexcept;
        ~Anchor();

        bool IsEmpty() const { return m_places.empty(); }

        /// Is this the folder that the name led to?
        bool IsFolder(const struct ::stat& status) const;

        /// Does the name lead through a directory that may be entered but not read, and hence not watched?
        /// What happens to the name there has to be asked.
        bool IsBlind() const { return m_blind; }

      private:
        friend class WatchedNames;
        Places m_places; ///< the folder last; before it links and what `..` left
        std::uint32_t m_number = 0;
        bool m_blind = false;
    };

    struct Attached {
        Anchor anchor;
        /// What the name led to when the folder had just been put under watch; nothing if it was before, or
        /// if its name goes through links.
        std::optional<struct ::stat> look;
    };

    /// Watches the folder at an absolute @p path and all that the path leads through.
    /// @return nothing if one of them is not there or cannot be watched; everything is given back then.
    std::optional<Attached> Attach(const std::string& path, std::uint32_t number);

    /// Takes in what has happened, waiting for it at most so long, and tells the listener, who must not
    /// attach or release anchors from within. Lost events lose every name.
    /// @return whether mounts have changed; then any name may lead elsewhere.
    bool Take(int milliseconds);

    /// Should Take be called soon, for the sake of the queue?
    bool NeedsTaking() const { return m_inotify.NeedsTaking(); }

    /// Trusts nothing known so far: every anchored name is lost.
    void LoseAll();

    /// Does Take tell of mounts?
    bool SeesMounts() const { return m_inotify.SeesMounts(); }

    /// Closes the descriptors. @pre no anchor is left.
    void Close() { m_inotify.Close(); }

  private:
    PlacePtr Root();
    PlacePtr Child(const PlacePtr& parent, std::string_view name);
    bool Establish(Place& place);
    bool Walk(std::string path, Places& places);
    int AddWatch(const std::string& path);
    void Apply(const ::inotify_event& event);
    void ForgetWatch(int watch);
    void Tell(const Place& place, const ::inotify_event& event);
    void Lose(Place& place);
    void LoseBeneath(Place& place);
    void ReleaseWatch(Place& place);

    NameListener& m_listener;
    InotifyInstance m_inotify;
    std::weak_ptr<Place> m_root;
    boost::unordered_flat_map<int, boost::container::small_vector<Place*, 1>> m_owners; ///< by watch
    const Place* m_established = nullptr; ///< the last that the present walk has made
    struct ::stat m_look {};              ///< what was found there
};

} // namespace linux_host
