#include "editops/basics/UnjoinedCuts.h"

#include "editops/basics/IndexIndependentEventList.h"
#include "platform/base/Time.h"

#include <cmath>
#include <string>

namespace {

// How much earlier an out point is looked at: one just behind a cut counts as before it.
constexpr double kOutPointEarly = 0.0001;

bool sameTime(double a, double b) { return std::fabs(a - b) <= kTimeTolerance; }

} // namespace

UnjoinedCut::UnjoinedCut(const ce_handle& point, unsigned cutFlags)
    : handle(point), effectGraph(point.getEffectGraph()), flags(cutFlags) {}

// --- changing ------------------------------------------------------------------------------------

void UnjoinedCuts::addHandle(const ce_handle& handle, unsigned flags) {
    if (!handle.valid())
        return;
    if (const int present = getIndexFor(handle); present >= 0) {
        (*this)[static_cast<std::uint16_t>(present)].flags = flags;
        return;
    }
    std::uint16_t place = 0;
    while (place < size() && !((*this)[place].handle > handle))
        ++place;
    insert(place, UnjoinedCut(handle, flags));
}

void UnjoinedCuts::deleteHandle(const ce_handle& handle) {
    if (const int present = getIndexFor(handle); present >= 0)
        erase(static_cast<std::uint16_t>(present));
}

void UnjoinedCuts::toggleHandle(const ce_handle& handle, unsigned flags) {
    if (isMember(handle))
        deleteHandle(handle);
    else
        addHandle(handle, flags);
}

// --- asking --------------------------------------------------------------------------------------

int UnjoinedCuts::getIndexFor(const ce_handle& handle) const {
    for (std::uint16_t i = 0; i < size(); ++i)
        if ((*this)[i].handle == handle)
            return i;
    return -1;
}

unsigned short UnjoinedCuts::numSelectionsBeforeTime(double seconds) const {
    unsigned short count = 0;
    for (const UnjoinedCut& cut : items()) {
        if (!cut.handle.valid())
            continue;
        const double time = cut.handle.get_edit_time();
        if (!(time < seconds) || sameTime(time, seconds))
            break;
        ++count;
    }
    return count;
}

bool UnjoinedCuts::isPopped(const ce_handle& handle) const {
    if (!handle.valid())
        return false;
    const double early = handle.is_out_point() ? kOutPointEarly : 0.0;
    return numSelectionsBeforeTime(handle.get_edit_time() - early) % 2 == 1;
}

int UnjoinedCuts::getNearestHandle(double seconds) const {
    if (empty())
        return -1;
    const auto timeOf = [this](int index) {
        return getHandleRef(static_cast<unsigned short>(index)).get_edit_time();
    };
    int later = 0;
    while (later < size() && !(timeOf(later) > seconds - kTimeTolerance))
        ++later;
    if (later == size())
        return later - 1;
    if (later > 0)
        return timeOf(later) - seconds > seconds - timeOf(later - 1) ? later - 1 : later;
    // The first is as near as any; of a cut's two points at that time the in point is meant.
    const bool firstIsOutHere =
        size() > 1 && getHandleRef(0).is_out_point() && sameTime(timeOf(0), seconds);
    return firstIsOutHere && getHandleRef(1).getIndex() == getHandleRef(0).getIndex() + 1 ? 1 : 0;
}

// --- flags ---------------------------------------------------------------------------------------

unsigned UnjoinedCuts::getFlag(const ce_handle& handle) const {
    const int index = getIndexFor(handle);
    return index < 0 ? 0 : getFlag(static_cast<unsigned short>(index));
}

unsigned UnjoinedCuts::getFlag(unsigned short index) const {
    return index < size() ? (*this)[index].flags : 0;
}

void UnjoinedCuts::setFlag(unsigned short index, unsigned flags, bool on) {
    if (index >= size())
        return;
    unsigned& present = (*this)[index].flags;
    present = on ? present | flags : present & ~flags;
}

bool UnjoinedCuts::anyMatching(unsigned mask) const { return numMatching(mask) != 0; }

unsigned short UnjoinedCuts::numMatching(unsigned mask) const {
    unsigned short count = 0;
    for (const UnjoinedCut& cut : items())
        if ((cut.flags & mask) != 0)
            ++count;
    return count;
}

void UnjoinedCuts::clearTrimConstraints() {
    for (unsigned short i = 0; i < size(); ++i)
        setFlag(i, kCutConstraints, false);
}
