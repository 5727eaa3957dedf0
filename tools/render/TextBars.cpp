#include "render/TextBars.h"

#include <cctype>
#include <cmath>

#include "render/Pi.h"

namespace talonvireo {
namespace render {

namespace {

// Segments a (top), b (top right), c (bottom right), d (bottom), e (bottom left), f (top
// left), g (middle) as bits 0 .. 6.
int segments(char ch) {
    switch (ch) {
        case '0':
        case 'O':
            return 0x3f;
        case '1':
            return 0x06;
        case '2':
            return 0x5b;
        case '3':
            return 0x4f;
        case '4':
            return 0x66;
        case '5':
        case 'S':
        case 's':
            return 0x6d;
        case '6':
            return 0x7d;
        case '7':
            return 0x07;
        case '8':
            return 0x7f;
        case '9':
            return 0x6f;
        case 'A':
        case 'a':
            return 0x77;
        case 'B':
        case 'b':
            return 0x7c;
        case 'C':
            return 0x39;
        case 'c':
            return 0x58;
        case 'D':
        case 'd':
            return 0x5e;
        case 'E':
        case 'e':
            return 0x79;
        case 'F':
        case 'f':
            return 0x71;
        case 'G':
        case 'g':
            return 0x3d;
        case 'H':
            return 0x76;
        case 'h':
            return 0x74;
        case 'I':
        case 'i':
            return 0x30;
        case 'J':
        case 'j':
            return 0x1e;
        case 'L':
        case 'l':
            return 0x38;
        case 'N':
        case 'n':
            return 0x54;
        case 'o':
            return 0x5c;
        case 'P':
        case 'p':
            return 0x73;
        case 'Q':
        case 'q':
            return 0x67;
        case 'R':
        case 'r':
            return 0x50;
        case 'T':
        case 't':
            return 0x78;
        case 'U':
            return 0x3e;
        case 'u':
            return 0x1c;
        case 'Y':
        case 'y':
            return 0x6e;
        case '-':
            return 0x40;
        case '_':
            return 0x08;
        default:
            return 0;
    }
}

}  // namespace

std::vector<FrameBar> textBars(const ClutterText& text) {
    const double h = text.height;
    const double w = 0.6 * h;
    const double t = h / 7.0;
    const double advance = w + 2.0 * t;
    // Each segment as [x0, x1] x [y0, y1] in the character's own cell (x right, y down); they
    // meet without overlapping.
    const double cell[7][4] = {{0.0, w, 0.0, t},                           // a
                               {w - t, w, t, 0.5 * h},                     // b
                               {w - t, w, 0.5 * h, h - t},                 // c
                               {0.0, w, h - t, h},                         // d
                               {0.0, t, 0.5 * h, h - t},                   // e
                               {0.0, t, t, 0.5 * h},                       // f
                               {t, w - t, 0.5 * (h - t), 0.5 * (h + t)}};  // g
    const double a = text.angleDeg * kPi / 180.0;
    const double ux = std::cos(a), uy = std::sin(a);
    std::vector<FrameBar> bars;
    for (std::size_t i = 0; i < text.text.size(); ++i) {
        const int mask = segments(text.text[i]);
        for (int s = 0; s < 7; ++s) {
            if ((mask & (1 << s)) == 0) {
                continue;
            }
            const double* b = cell[s];
            const double lx = i * advance + 0.5 * (b[0] + b[1]);
            const double ly = 0.5 * (b[2] + b[3]);
            // u along the text's baseline, v down it.
            FrameBar bar;
            bar.cx = text.x + lx * ux - ly * uy;
            bar.cy = text.y + lx * uy + ly * ux;
            bar.ux = ux;
            bar.uy = uy;
            bar.halfU = 0.5 * (b[1] - b[0]);
            bar.halfV = 0.5 * (b[3] - b[2]);
            bars.push_back(bar);
        }
    }
    return bars;
}

}  // namespace render
}  // namespace talonvireo
