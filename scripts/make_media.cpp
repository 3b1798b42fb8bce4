// Draws what the example payloads show: each picture is a function from a point to a colour.

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

// Does not include what it needs itself.
#include <jpeglib.h>

namespace {

constexpr double kPi = std::numbers::pi;

// --- Colours and shapes -------------------------------------------------------------------------

struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
};

constexpr Color hex(unsigned rgb) {
    return {((rgb >> 16U) & 255U) / 255.0, ((rgb >> 8U) & 255U) / 255.0, (rgb & 255U) / 255.0};
}

Color mix(Color a, Color b, double share) {
    share = std::clamp(share, 0.0, 1.0);
    return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
            a.blue + (b.blue - a.blue) * share};
}

// Points go from 0 to `width` and from 0 (top) to `height`.
struct Point {
    double x = 0;
    double y = 0;
};
using Picture = std::function<Color(Point)>;

double smooth(double from, double to, double at) {
    const double t = std::clamp((at - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

double distance(Point a, Point b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

bool inBox(Point p, double left, double top, double width, double height) {
    return p.x >= left && p.x < left + width && p.y >= top && p.y < top + height;
}

// An upright triangle or, with a narrower top, a trapezium.
bool inTaper(Point p, double middle, double top, double bottom, double topWidth,
             double bottomWidth) {
    if (p.y < top || p.y >= bottom) return false;
    const double share = (p.y - top) / (bottom - top);
    return std::abs(p.x - middle) < (topWidth + (bottomWidth - topWidth) * share) / 2;
}

// A fir of three tiers that stands at `foot`.
bool inFir(Point p, Point foot, double size) {
    for (int tier = 0; tier < 3; ++tier) {
        const double top = foot.y - size * (1.0 - 0.24 * tier);
        if (inTaper(p, foot.x, top, top + size * 0.46, 0, size * (0.26 + 0.11 * tier))) return true;
    }
    return inBox(p, foot.x - size * 0.03, foot.y - size * 0.1, size * 0.06, size * 0.1);
}

// The height of a ridge: a few waves whose lengths have no common measure.
double ridge(double x, double seed, double roughness) {
    return std::sin(x * 0.0071 + seed) * 0.6 + std::sin(x * 0.0173 + seed * 2.3) * 0.28 +
           std::sin(x * 0.0391 + seed * 4.1) * 0.12 * roughness +
           std::abs(std::sin(x * 0.0117 + seed * 1.7)) * 0.5 * roughness;
}

// A number from 0 to 1 that belongs to the place.
double chance(int x, int y) {
    std::uint32_t h =
        static_cast<std::uint32_t>(x) * 374761393U + static_cast<std::uint32_t>(y) * 668265263U;
    h = (h ^ (h >> 13U)) * 1274126177U;
    return static_cast<double>((h ^ (h >> 16U)) & 0xFFFFU) / 65535.0;
}

// How bright the stars are here: at most one in each cell.
double stars(Point p, double cell) {
    const int cx = static_cast<int>(p.x / cell);
    const int cy = static_cast<int>(p.y / cell);
    if (chance(cx, cy) < 0.55) return 0;
    const Point star = {(cx + 0.2 + 0.6 * chance(cx + 91, cy)) * cell,
                        (cy + 0.2 + 0.6 * chance(cx, cy + 57)) * cell};
    const double size = 0.6 + chance(cx + 7, cy + 3);
    return smooth(size + 0.7, size * 0.3, distance(p, star));
}

Color glow(Color under, Color light, Point p, Point middle, double radius, double strength) {
    return mix(under, light, strength * std::exp(-std::pow(distance(p, middle) / radius, 2)));
}

// --- Pictures -----------------------------------------------------------------------------------

Color cabinAboveTheValley(Point p) {
    Color c = mix(hex(0x2B2D5B), hex(0xF6A37B), smooth(0, 260, p.y));
    c = mix(c, hex(0xFFD9A0), smooth(200, 300, p.y) * 0.7);
    c = mix(c, hex(0xFFFFFF), stars(p, 34) * smooth(150, 20, p.y));
    c = glow(c, hex(0xFFE9C2), p, {520, 205}, 120, 0.75);
    c = mix(c, hex(0xFFF4DC), smooth(36, 34.5, distance(p, {520, 205})));
    const std::array<Color, 4> ridges = {hex(0x9A7BA0), hex(0x6F5F92), hex(0x474A7C),
                                         hex(0x2A3158)};
    for (std::size_t i = 0; i < ridges.size(); ++i) {
        const auto layer = static_cast<double>(i);
        const double top = 225 + layer * 34 - 42 * ridge(p.x * 1.2, 1.4 + layer * 2.1, 1.4);
        if (p.y > top)
            c = mix(ridges[i], hex(0xE9B7A4), 0.35 * smooth(top + 90, top, p.y) / (layer + 1));
    }
    const double meadow = 340 - 46 * std::exp(-std::pow((p.x - 210) / 190, 2)) - 0.03 * p.x;
    for (int i = 0; i < 15; ++i) {
        const double x = 20 + i * 51 + 22 * chance(i, 5);
        if (x > 120 && x < 300) continue;
        const double foot = 344 - 46 * std::exp(-std::pow((x - 210) / 190, 2)) - 0.03 * x;
        if (inFir(p, {x, foot}, 44 + 46 * chance(i, 9))) c = hex(0x121A33);
    }
    if (inBox(p, 158, 252, 104, 56)) c = hex(0x4A2C2E);
    if (inTaper(p, 210, 212, 258, 8, 142)) c = hex(0x2A1B27);
    if (inBox(p, 236, 206, 12, 30)) c = hex(0x2A1B27);
    for (const double left : {170.0, 222.0}) {
        if (inBox(p, left, 266, 28, 22) && std::abs(p.x - left - 14) > 1) c = hex(0xFFD27A);
    }
    c = glow(c, hex(0xFFC870), p, {210, 278}, 60, 0.35);
    if (p.y > meadow) c = mix(hex(0x1B2440), hex(0x0C1022), smooth(meadow, 400, p.y));
    return c;
}

Color lakeSide(Point p, double calm) {
    Color c = mix(hex(0x7CC6D8), hex(0xFDF1D6), smooth(0, 230, p.y));
    c = glow(c, hex(0xFFFFFF), p, {150, 90}, 130, 0.8);
    c = mix(c, hex(0xFFFFFF),
            0.45 *
                smooth(0.55, 1.0,
                       std::sin(p.x * 0.012 + std::sin(p.y * 0.05)) * std::sin(p.y * 0.045 + 1)) *
                smooth(170, 60, p.y));
    const std::array<Color, 3> hills = {hex(0x9CC7C4), hex(0x5FA3A0), hex(0x2F7A78)};
    for (std::size_t i = 0; i < hills.size(); ++i) {
        const auto layer = static_cast<double>(i);
        const double top = 176 + layer * 24 - 34 * ridge(p.x, 0.6 + layer * 1.9, 0.6);
        if (p.y > top) c = mix(hills[i], hex(0xEAF6F0), 0.4 * smooth(top, 236, p.y));
    }
    for (int i = 0; i < 9; ++i) {
        if (inFir(p, {455 + i * 34.0, 240}, (50 + 34 * chance(i, 2)) * calm)) c = hex(0x1F5A55);
    }
    if (inBox(p, 505, 178, 130, 60)) c = hex(0xC8553D);
    if (inBox(p, 505, 178, 130, 60) && std::fmod(p.y - 178, 10) < 1.2) c = hex(0xB04630);
    if (inTaper(p, 570, 138, 182, 20, 164)) c = hex(0x3B3A44);
    for (const double left : {520.0, 556.0, 592.0}) {
        if (inBox(p, left, 194, 26, 28)) c = hex(0xFFF3D0);
        if (inBox(p, left + 12, 194, 2, 28) || inBox(p, left, 207, 26, 2)) c = hex(0xC8553D);
    }
    if (inBox(p, 440, 232, 310, 8)) c = hex(0x4B7C5A);
    return c;
}

Color lakeHouse(Point p) {
    constexpr double kShore = 240;
    Color c;
    if (p.y < kShore) {
        c = lakeSide(p, 1);
    } else {
        const double depth = p.y - kShore;
        const double wave = std::sin(p.y * 0.9 - depth * depth * 0.0016 + std::sin(p.x * 0.02) * 2);
        c = lakeSide({p.x + wave * depth * 0.035, kShore - depth * 0.95}, 1);
        c = mix(c, hex(0x2A8C98), 0.28 + 0.42 * smooth(0, 160, depth));
        c = mix(c, hex(0xFFFFFF), 0.12 * smooth(0.7, 1, wave));
    }
    for (int post = 0; post < 4; ++post) {
        if (inBox(p, 452 + post * 26.0, 244, 5, 22)) c = hex(0x5A4636);
    }
    if (inBox(p, 440, 240, 112, 6)) c = hex(0x8A6B4E);
    // The boat, with its sail down.
    const double hull = (p.x - 250) / 74;
    if (p.y > 300 - 8 * hull * hull * 0.6 && p.y < 326 - 22 * std::pow(std::abs(hull), 3) &&
        std::abs(hull) < 1)
        c = p.y < 306 ? hex(0xFFF8EA) : hex(0x25546B);
    if (inBox(p, 246, 206, 4, 95)) c = hex(0x7A5A40);
    if (p.x > 252 && p.x < 252 + (p.y - 212) * 0.62 && p.y > 212 && p.y < 292)
        c = mix(hex(0xFFF8EA), hex(0xF4C58A), (p.x - 252) / 60);
    return c;
}

Color oldTownByNight(Point p) {
    Color c = mix(hex(0x0B1437), hex(0x3A4C8C), smooth(0, 280, p.y));
    c = mix(c, hex(0xFFFFFF), stars(p, 30) * smooth(210, 60, p.y));
    c = glow(c, hex(0xC9D4FF), p, {606, 84}, 110, 0.45);
    const bool inMoon = distance(p, {606, 84}) < 34 && distance(p, {590, 76}) > 31;
    if (inMoon) c = hex(0xFFF6D8);
    for (int row = 0; row < 2; ++row) {
        const Color wall = row == 0 ? hex(0x26336B) : hex(0x151D45);
        const double wide = row == 0 ? 58 : 75;
        const int house = static_cast<int>(p.x / wide);
        const double left = house * wide;
        const double roof = (row == 0 ? 188 : 236) - 46 * chance(house, row + 11);
        const double peak = 30 + 26 * chance(house, row + 23);
        const bool pointed = inTaper(p, left + wide / 2, roof - peak, roof + 1, 0, wide);
        if (!pointed && !(p.y >= roof && p.x - left < wide)) continue;
        c = wall;
        const double wx = std::fmod(p.x - left, wide / 3) - wide / 6;
        const double wy = std::fmod(p.y - roof, 26) - 15;
        const int cell = static_cast<int>((p.x - left) / (wide / 3)) + house * 3;
        const bool isLit = chance(cell, static_cast<int>((p.y - roof) / 26) + row * 40) > 0.52;
        if (p.y > roof && std::abs(wx) < wide * 0.075 && std::abs(wy) < 7 && isLit)
            c = mix(hex(0xFFC65C), hex(0xFF9A4D), chance(cell, 77));
    }
    // The church.
    if (inBox(p, 214, 118, 42, 190) || inTaper(p, 235, 30, 120, 0, 52)) c = hex(0x101738);
    if (distance(p, {235, 146}) < 12) c = hex(0xFFE3A0);
    if (inBox(p, 234, 137, 2, 10) || inBox(p, 234, 145, 8, 2)) c = hex(0x101738);
    // The train on its bridge.
    if (p.y > 330) {
        const double arch = std::fmod(p.x + 30, 125) - 62.5;
        const bool isOpen = std::hypot(arch, std::max(0.0, 392 - p.y) * 1.15) < 46;
        c = isOpen ? mix(hex(0x0A1030), hex(0x1A2456), (p.y - 330) / 70) : hex(0x2A2F4F);
        if (p.y < 336) c = hex(0x4A4F70);
    }
    if (inBox(p, 60, 286, 640, 40)) {
        const double x = std::fmod(p.x - 60, 160);
        c = x < 4 ? hex(0x060A20) : p.y < 292 ? hex(0xD9DEF0) : hex(0x2F6FB0);
        const double window = std::fmod(x - 14, 28);
        if (x > 14 && x < 154 && window < 19 && p.y > 297 && p.y < 312) c = hex(0xFFE7A8);
        if (p.y > 320) c = hex(0xF2B134);
    }
    if (inTaper(p, 52, 290, 326, 4, 40) && p.x < 60) c = hex(0x2F6FB0);
    c = glow(c, hex(0xFFEFC0), p, {30, 318}, 36, 0.8);
    return c;
}

Color dunes(Point p) {
    Color c = mix(hex(0x4EA5C9), hex(0xFFE3B8), smooth(0, 200, p.y));
    c = glow(c, hex(0xFFF7E0), p, {560, 120}, 150, 0.9);
    c = mix(c, hex(0xFFFDF4), smooth(31, 29.5, distance(p, {560, 120})));
    if (p.y > 182) {
        c = mix(hex(0x2C8FA8), hex(0x7FCBC4), smooth(182, 250, p.y));
        const double glitter = std::sin(p.y * 1.7 + std::sin(p.x * 0.09) * 1.4);
        c = mix(c, hex(0xFFF6DC),
                0.5 * smooth(0.5, 1, glitter) * std::exp(-std::pow((p.x - 560) / 90, 2)));
    }
    const std::array<std::array<Color, 2>, 4> sand = {{{hex(0xF3D5A0), hex(0xD9AC70)},
                                                       {hex(0xF0C788), hex(0xC98F58)},
                                                       {hex(0xE9B270), hex(0xB0743F)},
                                                       {hex(0xD99A57), hex(0x8A5530)}}};
    for (std::size_t i = 0; i < sand.size(); ++i) {
        const auto layer = static_cast<double>(i);
        const double top = 222 + layer * 38 -
                           30 * std::sin(p.x * (0.0085 - layer * 0.0009) + layer * 2.2 + 0.6) -
                           9 * std::sin(p.x * 0.021 + layer);
        if (p.y <= top) continue;
        c = mix(sand[i][0], sand[i][1], smooth(top, top + 90, p.y));
        const double ripple = std::sin((p.y - top) * 0.75 + p.x * 0.03);
        c = mix(c, sand[i][1], 0.25 * smooth(0.3, 1, ripple) * smooth(top + 8, top + 40, p.y));
    }
    for (int blade = 0; blade < 26; ++blade) {
        const double lean = (chance(blade, 1) - 0.35) * 46;
        const double tall = 40 + 44 * chance(blade, 2);
        const double up = (392 - p.y) / tall;
        const double x = 70 + blade * 5.2 + lean * up * up;
        if (up > 0 && up < 1 && std::abs(p.x - x) < 2.2 * (1 - up)) c = hex(0x5B6B3A);
    }
    // The fire.
    const Point fire = {610, 352};
    c = glow(c, hex(0xFF9D3C), p, fire, 74, 0.6);
    const double sway = std::sin(p.y * 0.13) * 4;
    if (inTaper(p, fire.x + sway, 306, 360, 0, 34)) c = hex(0xFF7A2A);
    if (inTaper(p, fire.x + sway * 0.6, 326, 360, 0, 20)) c = hex(0xFFD868);
    if (std::abs((p.y - 362) - (p.x - fire.x) * 0.16) < 4 && std::abs(p.x - fire.x) < 30)
        c = hex(0x4A2E22);
    if (std::abs((p.y - 362) + (p.x - fire.x) * 0.16) < 4 && std::abs(p.x - fire.x) < 30)
        c = hex(0x5C3A2A);
    return c;
}

Color firstSnow(Point p) {
    Color c = mix(hex(0x8FB7D9), hex(0xEAF3FA), smooth(0, 260, p.y));
    c = glow(c, hex(0xFFF1DC), p, {610, 110}, 130, 0.8);
    for (int i = 0; i < 3; ++i) {
        const double top = 190 + i * 40 - 44 * ridge(p.x * 1.3, 3.0 + i * 1.3, 1.2);
        if (p.y > top) {
            const Color rock = mix(hex(0x7D9CC0), hex(0x4F7299), i / 2.0);
            const double line = top + 26 + 16 * std::sin(p.x * 0.09 + i) + 9 * std::sin(p.x * 0.23);
            c = p.y < line ? hex(0xFAFDFF) : mix(rock, hex(0xEAF3FA), smooth(line, 330, p.y));
        }
    }
    const double slope = 318 + 20 * std::sin(p.x * 0.008 + 0.4);
    for (int i = 0; i < 17; ++i) {
        const double x = 12 + i * 45 + 16 * chance(i, 3);
        const Point foot = {x, 326 + 20 * std::sin(x * 0.008 + 0.4)};
        const double size = 66 + 66 * chance(i, 8);
        if (inFir(p, foot, size)) c = hex(0x2F5B5A);
        if (inFir({p.x + 3, p.y + 7}, foot, size * 0.94) && !inFir({p.x - 5, p.y - 9}, foot, size))
            c = hex(0xF7FBFF);
    }
    if (p.y > slope) c = mix(hex(0xFFFFFF), hex(0xC9DCEC), smooth(slope, 400, p.y));
    const double track = 430 + 60 * std::sin((p.y - 310) * 0.03);
    if (p.y > slope + 6 && std::abs(std::abs(p.x - track) - 7) < 2.2) c = hex(0xA9C3DA);
    const int cx = static_cast<int>(p.x / 26);
    const int cy = static_cast<int>(p.y / 26);
    const Point flake = {(cx + 0.2 + 0.6 * chance(cx, cy)) * 26,
                         (cy + 0.2 + 0.6 * chance(cy, cx)) * 26};
    if (distance(p, flake) < 1.2 + 2.2 * chance(cx + 5, cy + 5)) c = mix(c, hex(0xFFFFFF), 0.85);
    return c;
}

Color morningFog(Point p) {
    Color c = mix(hex(0xF7D9C4), hex(0xF6EFE6), smooth(0, 420, p.y));
    c = mix(c, hex(0xF08A5D), smooth(72, 70, distance(p, {340, 200})));
    for (int i = 0; i < 6; ++i) {
        const double top = 270 + i * 76 - 60 * ridge(p.x * 1.3, 0.9 + i * 1.6, 0.8);
        bool isTree = false;
        for (int tree = 0; i > 2 && tree < 12; ++tree) {
            const double x = tree * 44 + 30 * chance(tree, i);
            const double foot = 276 + i * 76 - 60 * ridge(x * 1.3, 0.9 + i * 1.6, 0.8);
            isTree = isTree || inFir(p, {x, foot}, (26 + 26 * chance(i, tree)) * (i - 1.6));
        }
        if (p.y > top || isTree) {
            const Color hill = mix(hex(0xE3C4B8), hex(0x23424F), i / 5.0);
            c = mix(hill, hex(0xF6EFE6), 0.75 * smooth(top + 10, top + 130, p.y));
        }
    }
    return c;
}

Color lighthouse(Point p) {
    Color c = mix(hex(0x14344F), hex(0xF2A65A), smooth(40, 520, p.y));
    c = mix(c, hex(0xFFFFFF), stars(p, 38) * smooth(260, 80, p.y));
    const Point lamp = {300, 236};
    const double angle = std::atan2(p.y - lamp.y, std::abs(p.x - lamp.x));
    const double away = distance(p, lamp);
    c = mix(c, hex(0xFFF2C0),
            0.75 * smooth(0.17, 0.0, std::abs(angle + 0.1)) * smooth(420, 20, away));
    c = glow(c, hex(0xFFF2C0), p, lamp, 60, 0.8);
    if (p.y > 560) {
        c = mix(hex(0xC97B4E), hex(0x123048), smooth(560, 740, p.y));
        const double wave = std::sin(p.y * 0.5 + std::sin(p.x * 0.03) * 1.6);
        c = mix(c, hex(0xF9D39A), 0.35 * smooth(0.6, 1, wave));
    }
    const double rock = 596 - 74 * std::exp(-std::pow((p.x - 320) / 120, 2)) +
                        8 * std::sin(p.x * 0.11) + 5 * std::sin(p.x * 0.05);
    if (inTaper(p, 300, 262, 560, 50, 92))
        c = std::fmod(p.y - 262, 100) < 50 ? hex(0xD7443E) : hex(0xFBF4E6);
    if (inTaper(p, 300, 262, 560, 50, 92)) c = mix(c, hex(0x2A1B27), 0.35 * smooth(300, 350, p.x));
    if (inBox(p, 264, 256, 72, 8)) c = hex(0x22313D);
    if (inBox(p, 280, 218, 40, 38))
        c = std::fmod(p.x - 280, 13) < 2 ? hex(0x22313D) : hex(0xFFF2C0);
    if (inTaper(p, 300, 190, 220, 6, 56)) c = hex(0xB5322E);
    if (p.y > rock) c = mix(hex(0x2B3A42), hex(0x10191F), smooth(rock, 690, p.y));
    return c;
}

// A walk along the coast: `time` goes from 0 to 1 and ends where it began.
Color coastPath(Point p, double time) {
    const double turn = time * 2 * kPi;
    Color c = mix(hex(0x6DB8DB), hex(0xFDF0D5), smooth(0, 90, p.y));
    c = mix(c, hex(0xFFFFFF), smooth(15, 14, distance(p, {250, 34})));
    if (p.y > 88) {
        c = mix(hex(0x1F7F98), hex(0x7FD0CB), smooth(88, 150, p.y));
        const double wave = std::sin(p.y * 0.8 + std::sin(p.x * 0.06 + turn) * 1.3 - turn);
        c = mix(c, hex(0xFFFFFF), 0.4 * smooth(0.75, 1, wave));
    }
    const Point boat = {200 + 14 * std::sin(turn), 104 + 2 * std::sin(2 * turn)};
    if (inTaper(p, boat.x, boat.y - 26, boat.y - 2, 0, 20)) c = hex(0xFFFFFF);
    if (inTaper(p, boat.x, boat.y, boat.y + 6, 30, 18)) c = hex(0xC8553D);
    const double cliff = 112 + 30 * smooth(40, 190, p.x) + 24 * smooth(170, 320, p.x);
    if (p.y > cliff) c = mix(hex(0x7FB069), hex(0x3C6E47), smooth(cliff, 180, p.y));
    const double path = 52 + (p.y - 118) * 1.6;
    if (p.y > cliff && std::abs(p.x - path) < 4 + (p.y - 110) * 0.16) c = hex(0xEBD3A4);
    return c;
}

// --- Files --------------------------------------------------------------------------------------

struct Raster {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

Raster drawn(int width, int height, const Picture& picture) {
    constexpr int kSamples = 4;  // along each side of a pixel
    Raster raster = {width, height, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Color sum;
            for (int s = 0; s < kSamples * kSamples; ++s) {
                const Color c = picture(
                    {x + (s % kSamples + 0.5) / kSamples, y + (s / kSamples + 0.5) / kSamples});
                sum = {sum.red + c.red, sum.green + c.green, sum.blue + c.blue};
            }
            for (const double channel : {sum.red, sum.green, sum.blue}) {
                const double value = channel / (kSamples * kSamples) * 255;
                raster.rgb.push_back(
                    static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)));
            }
        }
    }
    return raster;
}

std::string jpeg(const Raster& raster, int quality) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &memory, &size);
    info.image_width = static_cast<JDIMENSION>(raster.width);
    info.image_height = static_cast<JDIMENSION>(raster.height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    info.optimize_coding = TRUE;
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < raster.height; ++y) {
        auto* row = const_cast<JSAMPROW>(raster.rgb.data()) + std::ptrdiff_t{y} * raster.width * 3;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    std::string file(reinterpret_cast<const char*>(memory), size);
    jpeg_destroy_compress(&info);
    std::free(memory);
    return file;
}

void save(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) {
        std::cerr << "make_media: can't write " << path << "\n";
        std::exit(1);
    }
    std::cout << path << ": " << bytes.size() << " bytes\n";
}

std::string little(std::uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i) & 0xFFU);
    return text;
}
std::string u16(std::uint32_t value) {
    return little(value, 2);
}
std::string u32(std::size_t value) {
    return little(static_cast<std::uint32_t>(value), 4);
}
std::string chunk(const std::string& name, const std::string& content) {
    return name + u32(content.size()) + content + std::string(content.size() % 2, '\0');
}
std::string list(const std::string& kind, const std::string& content) {
    return chunk("LIST", kind + content);
}

// Dots that run round, one after the other.
void saveSpinner(const std::string& path) {
    constexpr int kSize = 120;
    constexpr int kDots = 12;
    constexpr int kShades = 64;
    std::array<GifColorType, kShades> colors{};
    for (int i = 0; i < kShades; ++i) {
        const Color c = mix(hex(0xFFF6EA), hex(0xD9622B), i / (kShades - 1.0));
        const auto byte = [](double channel) {
            return static_cast<GifByteType>(channel * 255 + 0.5);
        };
        colors[static_cast<std::size_t>(i)] = {byte(c.red), byte(c.green), byte(c.blue)};
    }
    int error = 0;
    GifFileType* gif = EGifOpenFileName(path.c_str(), false, &error);
    ColorMapObject* map = GifMakeMapObject(kShades, colors.data());
    EGifSetGifVersion(gif, true);
    EGifPutScreenDesc(gif, kSize, kSize, 6, 0, map);
    EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE);
    EGifPutExtensionBlock(gif, 11, "NETSCAPE2.0");
    EGifPutExtensionBlock(gif, 3, "\1\0\0");
    EGifPutExtensionTrailer(gif);
    for (int frame = 0; frame < kDots; ++frame) {
        const GraphicsControlBlock control = {DISPOSE_DO_NOT, false, 8, NO_TRANSPARENT_COLOR};
        std::array<GifByteType, 4> bytes{};
        EGifGCBToExtension(&control, bytes.data());
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, bytes.data());
        EGifPutImageDesc(gif, 0, 0, kSize, kSize, false, nullptr);
        for (int y = 0; y < kSize; ++y) {
            std::vector<GifPixelType> row;
            for (int x = 0; x < kSize; ++x) {
                double ink = 0;
                for (int dot = 0; dot < kDots; ++dot) {
                    const double angle = dot * 2 * kPi / kDots - kPi / 2;
                    const Point middle = {60 + 40 * std::cos(angle), 60 + 40 * std::sin(angle)};
                    const double age = (frame - dot + kDots) % kDots;
                    const double radius = 9 - age * 0.45;
                    ink = std::max(ink, smooth(radius + 0.7, radius - 0.7,
                                               distance({x + 0.5, y + 0.5}, middle)) *
                                            (1 - age / (kDots + 1)));
                }
                row.push_back(static_cast<GifPixelType>(ink * (kShades - 1) + 0.5));
            }
            EGifPutLine(gif, row.data(), kSize);
        }
    }
    GifFreeMapObject(map);
    if (EGifCloseFile(gif, &error) == GIF_ERROR) std::exit(1);
    std::cout << path << "\n";
}

// Three bells, one after the other.
std::string chime() {
    constexpr std::uint32_t kRate = 22050;
    std::string samples;
    for (std::uint32_t i = 0; i < kRate * 3 / 2; ++i) {
        const double time = static_cast<double>(i) / kRate;
        double value = 0;
        for (int bell = 0; bell < 3; ++bell) {
            const double since = time - bell * 0.18;
            if (since < 0) continue;
            const double pitch = std::array{523.25, 659.25, 783.99}[static_cast<std::size_t>(bell)];
            const double attack = std::min(1.0, since / 0.004);
            value +=
                attack * (std::exp(-since * 4) * std::sin(2 * kPi * pitch * since) +
                          0.3 * std::exp(-since * 9) * std::sin(2 * kPi * pitch * 2.76 * since));
        }
        const double faded = value * 0.26 * std::min(1.0, (1.5 - time) / 0.1);
        samples += u16(static_cast<std::uint16_t>(static_cast<std::int16_t>(faded * 32767)));
    }
    const std::string format =
        u16(1) + u16(1) + u32(kRate) + u32(std::size_t{kRate} * 2) + u16(2) + u16(16);
    return chunk("RIFF", "WAVE" + chunk("fmt ", format) + chunk("data", samples));
}

// Motion JPEG: pictures in a row, with an index at the end.
std::string film() {
    constexpr int kWidth = 320;
    constexpr int kHeight = 180;
    constexpr int kFrames = 20;
    constexpr std::uint32_t kPerSecond = 10;
    std::string movie = "movi";
    std::string index;
    std::size_t largest = 0;
    for (int i = 0; i < kFrames; ++i) {
        const auto scene = [i](Point p) { return coastPath(p, static_cast<double>(i) / kFrames); };
        const std::string picture = jpeg(drawn(kWidth, kHeight, scene), 62);
        index += "00dc" + u32(0x10) + u32(movie.size()) + u32(picture.size());
        movie += chunk("00dc", picture);
        largest = std::max(largest, picture.size());
    }
    const std::string main = u32(1'000'000 / kPerSecond) + u32(largest * kPerSecond) + u32(0) +
                             u32(0x10) + u32(kFrames) + u32(0) + u32(1) + u32(largest) +
                             u32(kWidth) + u32(kHeight) + std::string(16, '\0');
    const std::string stream = "vidsMJPG" + u32(0) + u32(0) + u32(0) + u32(1) + u32(kPerSecond) +
                               u32(0) + u32(kFrames) + u32(largest) + u32(0xFFFFFFFF) + u32(0) +
                               u16(0) + u16(0) + u16(kWidth) + u16(kHeight);
    const std::string format = u32(40) + u32(kWidth) + u32(kHeight) + u16(1) + u16(24) + "MJPG" +
                               u32(std::size_t{kWidth} * kHeight * 3) + std::string(16, '\0');
    const std::string header = list(
        "hdrl", chunk("avih", main) + list("strl", chunk("strh", stream) + chunk("strf", format)));
    return chunk("RIFF", "AVI " + header + chunk("LIST", movie) + chunk("idx1", index));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_media FOLDER\n";
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    constexpr int kQuality = 84;
    save(folder + "landscape-1.jpg", jpeg(drawn(750, 400, cabinAboveTheValley), kQuality));
    save(folder + "landscape-2.jpg", jpeg(drawn(750, 400, lakeHouse), kQuality));
    save(folder + "landscape-3.jpg", jpeg(drawn(750, 400, oldTownByNight), kQuality));
    save(folder + "landscape-4.jpg", jpeg(drawn(750, 400, dunes), kQuality));
    save(folder + "banner.jpg", jpeg(drawn(750, 400, firstSnow), kQuality));
    save(folder + "portrait-1.jpg", jpeg(drawn(500, 750, morningFog), kQuality));
    save(folder + "portrait-2.jpg", jpeg(drawn(500, 750, lighthouse), kQuality));
    saveSpinner(folder + "spinner.gif");
    save(folder + "chime.wav", chime());
    save(folder + "clip.avi", film());
}
