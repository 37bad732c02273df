#include "decode/ZPRecordTreeDifference.h"

#include "decode/ZPRecordTreeText.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <map>

namespace {

using Kind = ZPRecordValueKind;
using Places = std::vector<std::uint32_t>;

Places placesFrom(const ZPRecordTree &tree, std::uint32_t place, std::uint32_t end) {
    Places places;
    for (; place < end; place = tree[place].end)
        places.push_back(place);
    return places;
}

class Comparer {
  public:
    Comparer(const ZPRecordTree &before, const ZPRecordTree &after)
        : _before(before), _after(after) {}

    void compareGroups(const std::string &path, const Places &before, const Places &after) {
        // By name, and those of the same name in order.
        std::map<std::string_view, Places> byName;
        for (const std::uint32_t place : after)
            byName[_after.name(_after[place])].push_back(place);
        std::map<std::string_view, std::size_t> timesSeen;
        for (const std::uint32_t place : before) {
            const std::string_view name = _before.name(_before[place]);
            const std::string childPath = join(path, name);
            const std::size_t times = timesSeen[name]++;
            if (const Places &same = byName[name]; times < same.size())
                compareValues(childPath, place, same[times]);
            else
                addRemoved(childPath, place);
        }
        std::map<std::string_view, std::size_t> timesListed;
        for (const std::uint32_t place : after) {
            const std::string_view name = _after.name(_after[place]);
            if (timesListed[name]++ >= timesSeen[name])
                addAdded(join(path, name), place);
        }
    }

    std::vector<ZPRecordChange> takeChanges() { return std::move(_changes); }

  private:
    static std::string join(const std::string &path, std::string_view name) {
        return (path.empty() ? path : path + ".") + ZPEscapedText(name);
    }

    void compareValues(const std::string &path, std::uint32_t before, std::uint32_t after) {
        const ZPRecordValue &old = _before[before], &now = _after[after];
        if (old.kind != now.kind || !old.isContainer()) {
            if (!areEqual(before, after))
                _changes.push_back(
                    {path, ZPRecordValueText(_before, old), ZPRecordValueText(_after, now)});
            return;
        }
        const Places oldPlaces = placesFrom(_before, before + 1, old.end);
        const Places newPlaces = placesFrom(_after, after + 1, now.end);
        if (old.kind == Kind::group)
            compareGroups(path, oldPlaces, newPlaces);
        else
            compareLists(path, oldPlaces, newPlaces);
    }

    void compareLists(const std::string &path, const Places &before, const Places &after) {
        const std::size_t most = std::min(before.size(), after.size());
        std::size_t head = 0, tail = 0;
        while (head < most && areEqual(before[head], after[head]))
            ++head;
        while (tail < most - head &&
               areEqual(before[before.size() - 1 - tail], after[after.size() - 1 - tail]))
            ++tail;
        const std::size_t oldEnd = before.size() - tail, newEnd = after.size() - tail;
        for (std::size_t index = head; index < std::max(oldEnd, newEnd); ++index) {
            const std::string childPath = path + ZPFormat("[%zu]", index);
            if (index >= newEnd)
                addRemoved(childPath, before[index]);
            else if (index >= oldEnd)
                addAdded(childPath, after[index]);
            else
                compareValues(childPath, before[index], after[index]);
        }
    }

    bool areEqual(std::uint32_t before, std::uint32_t after) const {
        const ZPRecordValue &old = _before[before], &now = _after[after];
        const std::uint32_t size = old.end - before;
        if (size != now.end - after)
            return false;
        for (std::uint32_t step = 0; step < size; ++step) {
            const ZPRecordValue &one = _before[before + step], &other = _after[after + step];
            if (one.kind != other.kind || one.number != other.number ||
                one.end - before != other.end - after ||
                (step > 0 && _before.name(one) != _after.name(other)) ||
                _before.text(one) != _after.text(other))
                return false;
        }
        return true;
    }

    void addRemoved(std::string path, std::uint32_t place) {
        _changes.push_back({std::move(path), ZPRecordValueText(_before, _before[place]), {}});
    }
    void addAdded(std::string path, std::uint32_t place) {
        _changes.push_back({std::move(path), {}, ZPRecordValueText(_after, _after[place])});
    }

    const ZPRecordTree &_before, &_after;
    std::vector<ZPRecordChange> _changes;
};

} // namespace

std::vector<ZPRecordChange> ZPRecordTreeDifference(const ZPRecordTree &before,
                                                   const ZPRecordTree &after) {
    Comparer comparer(before, after);
    comparer.compareGroups({}, placesFrom(before, 0, before.size()),
                           placesFrom(after, 0, after.size()));
    return comparer.takeChanges();
}
