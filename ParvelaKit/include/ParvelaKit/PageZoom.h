#pragma once

namespace parvela {

/// The steps of a page's zoom: tenths from 0.5 to 3, where 1 is the page's own size.
struct PageZoom {
    static constexpr double minimum = 0.5;
    static constexpr double maximum = 3;
    static constexpr double actualSize = 1;

    static double larger(double zoom);
    static double smaller(double zoom);
};

}  // namespace parvela
