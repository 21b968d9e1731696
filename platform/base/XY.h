// `XY<T>`: a place or a size on a plane.
#pragma once

// A value.
template <class T> struct XY {
    T x = T();
    T y = T();

    friend constexpr bool operator==(const XY&, const XY&) = default;
};
