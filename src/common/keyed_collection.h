#pragma once
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/failure.h"
#include "common/text.h"

namespace corvan {

// The runtime's ordered collection: items in insertion order, each under a
// text key that compares without regard to case. Adding a key twice fails
// with 457; looking up or removing a missing key fails with 5.
template <typename T>
class KeyedCollection {
public:
    using Entry = std::pair<std::string, T>;  // original key, item
    using const_iterator = typename std::list<Entry>::const_iterator;
    using iterator = typename std::list<Entry>::iterator;

    KeyedCollection() = default;
    KeyedCollection(KeyedCollection&&) noexcept = default;
    KeyedCollection& operator=(KeyedCollection&&) noexcept = default;
    // The index points into the list, so a copy rebuilds it.
    KeyedCollection(const KeyedCollection& other) {
        for (const Entry& entry : other.entries_) Add(entry.first, entry.second);
    }
    KeyedCollection& operator=(const KeyedCollection& other) {
        if (this != &other) {
            KeyedCollection copy(other);
            *this = std::move(copy);
        }
        return *this;
    }

    void Add(std::string key, T item) {
        std::string folded = UpperCase(key);
        if (index_.count(folded)) throw RuntimeError(error::kDuplicateKey, "Collection");
        entries_.emplace_back(std::move(key), std::move(item));
        index_.emplace(std::move(folded), std::prev(entries_.end()));
    }

    // Adds `item` under `key` unless the key is taken: null when added,
    // else the item already there (and `item` is left as it was). One
    // lookup where Find then Add would take three.
    T* AddOrFind(std::string key, T&& item) {
        std::string folded = UpperCase(key);
        auto found = index_.find(folded);
        if (found != index_.end()) return &found->second->second;
        entries_.emplace_back(std::move(key), std::move(item));
        index_.emplace(std::move(folded), std::prev(entries_.end()));
        return nullptr;
    }

    void Reserve(size_t count) { index_.reserve(count); }

    // Looks up a key already in capitals, without making a text of it.
    T* FindUpperCase(std::string_view folded) {
        auto found = index_.find(folded);
        return found == index_.end() ? nullptr : &found->second->second;
    }

    bool Contains(std::string_view key) const { return index_.count(UpperCase(key)) != 0; }

    T* Find(std::string_view key) {
        auto found = index_.find(UpperCase(key));
        return found == index_.end() ? nullptr : &found->second->second;
    }
    const T* Find(std::string_view key) const { return const_cast<KeyedCollection*>(this)->Find(key); }

    T& Item(std::string_view key) {
        T* item = Find(key);
        if (!item) throw RuntimeError(error::kInvalidProcedureCall, "Collection");
        return *item;
    }
    const T& Item(std::string_view key) const { return const_cast<KeyedCollection*>(this)->Item(key); }

    void Remove(std::string_view key) {
        auto found = index_.find(UpperCase(key));
        if (found == index_.end()) throw RuntimeError(error::kInvalidProcedureCall, "Collection");
        entries_.erase(found->second);
        index_.erase(found);
    }

    void Clear() {
        entries_.clear();
        index_.clear();
    }

    size_t Count() const { return entries_.size(); }
    bool Empty() const { return entries_.empty(); }

    iterator begin() { return entries_.begin(); }
    iterator end() { return entries_.end(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }

private:
    std::list<Entry> entries_;
    // Hashes a key and a view of one alike, so a lookup needs no copy.
    struct KeyHash {
        using is_transparent = void;
        size_t operator()(std::string_view key) const { return std::hash<std::string_view>{}(key); }
    };
    std::unordered_map<std::string, iterator, KeyHash, std::equal_to<>> index_;  // upper-cased key -> entry
};

}  // namespace corvan
