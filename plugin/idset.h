#pragma once

#include <QtGlobal>

#include <array>
#include <initializer_list>
#include <stdexcept>

namespace canservice {

/// A constant set of small numbers, 0 to \p Limit - 1: membership is one bit test, and any number
/// outside is in no set.
template <int Limit>
class IdSet
{
public:
    static constexpr int kLimit = Limit;

    constexpr IdSet() = default;

    /// The ids must ascend and fit; a constant set that breaks this does not compile.
    constexpr IdSet(std::initializer_list<int> ids)
    {
        int previous = -1;
        for (const int id : ids) {
            if (id <= previous || id >= Limit)
                throw std::logic_error("ids must ascend and be below the limit");
            previous = id;
            mWords[wordOf(id)] |= bitOf(id);
        }
    }

    constexpr bool contains(int id) const
    {
        return id >= 0 && id < Limit && (mWords[wordOf(id)] & bitOf(id)) != 0;
    }

    constexpr int size() const
    {
        int count = 0;
        for (int id = 0; id < Limit; ++id)
            count += contains(id) ? 1 : 0;
        return count;
    }

    constexpr bool overlaps(const IdSet &other) const
    {
        for (std::size_t word = 0; word < mWords.size(); ++word)
            if ((mWords[word] & other.mWords[word]) != 0)
                return true;
        return false;
    }

    constexpr bool includes(const IdSet &other) const
    {
        for (std::size_t word = 0; word < mWords.size(); ++word)
            if ((other.mWords[word] & ~mWords[word]) != 0)
                return false;
        return true;
    }

    constexpr IdSet operator|(const IdSet &other) const
    {
        IdSet both;
        for (std::size_t word = 0; word < mWords.size(); ++word)
            both.mWords[word] = mWords[word] | other.mWords[word];
        return both;
    }

private:
    static constexpr std::size_t wordOf(int id) { return static_cast<std::size_t>(id) / 64; }
    static constexpr quint64 bitOf(int id) { return quint64(1) << (id % 64); }

    std::array<quint64, (Limit + 63) / 64> mWords{};
};

/// Car model ids. Ids outside 0 to 127 are in no list.
using ModelSet = IdSet<128>;

} // namespace canservice
