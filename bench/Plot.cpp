// SPDX-License-Identifier: Apache-2.0
#include "Plot.h"

#include "Report.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr double Width = 420, Height = 260, Left = 56, Right = 404, Top = 34, Bottom = 214;

/// 1, 2 or 5 times a power of ten, so that about five steps reach the largest value.
double stepFor(double largest) {
    const double power = std::pow(10.0, std::floor(std::log10(largest / 5)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= largest / 5) return factor * power;
    return 10 * power;
}

/// From 0 to the first step above all values.
struct Axis {
    explicit Axis(double largest) : step(stepFor(largest)), end(step * std::ceil(largest / step)) {}

    [[nodiscard]] double share(double value) const { return value / end; }
    [[nodiscard]] std::string label(double value) const {
        return fixed(value, step >= 1 ? 0 : static_cast<int>(std::ceil(-std::log10(step))));
    }

    double step, end;
};

std::string words(double x, double y, const char* anchor, const std::string& text) {
    return "<text x=\"" + fixed(x, 1) + "\" y=\"" + fixed(y, 1) + "\" text-anchor=\"" + anchor + "\">" +
           text + "</text>\n";
}

std::string stroke(double x1, double y1, double x2, double y2, const char* colour) {
    return "<line x1=\"" + fixed(x1, 1) + "\" y1=\"" + fixed(y1, 1) + "\" x2=\"" + fixed(x2, 1) + "\" y2=\"" +
           fixed(y2, 1) + "\" stroke=\"" + colour + "\"/>\n";
}

class Drawing {
public:
    explicit Drawing(const Plot& plot)
        : plot(plot), across(largest(&Point::x)), upwards(largest(&Point::y)) {}

    [[nodiscard]] std::string text() const {
        std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + fixed(Width, 0) +
                          "\" height=\"" + fixed(Height, 0) +
                          "\" font-family=\"sans-serif\" font-size=\"11\">\n" +
                          "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" + grid();
        const double end = across.end;
        svg += stroke(x(0), y(std::max(0.0, plot.line.at(0))), x(end),
                      y(std::min(plot.line.at(end), upwards.end)), "#c60");
        for (const Point& point : plot.points)
            svg += "<circle cx=\"" + fixed(x(point.x), 1) + "\" cy=\"" + fixed(y(point.y), 1) +
                   "\" r=\"3.5\" fill=\"#06c\"/>\n";
        svg += words(Width / 2, 18, "middle", plot.title + ", R&#178; = " + fixed(plot.line.share, 4));
        svg += words((Left + Right) / 2, Height - 12, "middle", plot.across);
        svg += "<g transform=\"translate(14 " + fixed((Top + Bottom) / 2, 0) + ") rotate(-90)\">" +
               words(0, 0, "middle", plot.upwards) + "</g>\n</svg>\n";
        return svg;
    }

private:
    [[nodiscard]] double largest(double Point::*coordinate) const {
        double most = 0;
        for (const Point& point : plot.points) most = std::max(most, point.*coordinate);
        return most;
    }
    [[nodiscard]] double x(double value) const { return Left + (Right - Left) * across.share(value); }
    [[nodiscard]] double y(double value) const { return Bottom - (Bottom - Top) * upwards.share(value); }

    [[nodiscard]] std::string grid() const {
        std::string svg;
        for (double value = 0; value <= across.end * 1.001; value += across.step)
            svg += stroke(x(value), Top, x(value), Bottom, "#ddd") +
                   words(x(value), Bottom + 15, "middle", across.label(value));
        for (double value = 0; value <= upwards.end * 1.001; value += upwards.step)
            svg += stroke(Left, y(value), Right, y(value), "#ddd") +
                   words(Left - 5, y(value) + 4, "end", upwards.label(value));
        return svg;
    }

    const Plot& plot;
    Axis across, upwards;
};

} // namespace

void Plot::write(const std::string& path) const {
    std::ofstream file(path);
    file << Drawing(*this).text();
    if (!file.flush()) throw std::runtime_error(path + " could not be written");
}

} // namespace bench
