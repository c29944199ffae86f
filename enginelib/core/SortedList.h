// A list of unique values kept in order, for strings, paths and network computers. Lookups and
// insertions are logarithmic; the order is that of the value's operator<.
#pragma once

#include <algorithm>
#include <vector>

template <typename T>
class SortedList {
public:
    using const_iterator = typename std::vector<T>::const_iterator;

    // False when an equal value is in the list already.
    bool Add(const T& value) {
        auto place = std::lower_bound(mItems.begin(), mItems.end(), value);
        if (place != mItems.end() && !(value < *place)) {
            return false;
        }
        mItems.insert(place, value);
        return true;
    }

    bool Contains(const T& value) const {
        auto place = std::lower_bound(mItems.begin(), mItems.end(), value);
        return place != mItems.end() && !(value < *place);
    }

    bool Remove(const T& value) {
        auto place = std::lower_bound(mItems.begin(), mItems.end(), value);
        if (place == mItems.end() || value < *place) {
            return false;
        }
        mItems.erase(place);
        return true;
    }

    void Clear() { mItems.clear(); }
    size_t Size() const { return mItems.size(); }
    bool IsEmpty() const { return mItems.empty(); }
    const T& operator[](size_t index) const { return mItems[index]; }
    const_iterator begin() const { return mItems.begin(); }
    const_iterator end() const { return mItems.end(); }

private:
    std::vector<T> mItems;
};
