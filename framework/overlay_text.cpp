// OverlayQv::DrawText: a small stroke font, legible at any zoom.
#include <cctype>

#include "framework/overlay.h"
#include "spark/spark_gl.h"

namespace {

// Each glyph is a list of strokes separated by blanks; a stroke is a run of
// points "xy" on a grid 4 wide and 6 tall, y upwards.
const char *glyph(char c) {
    switch (std::toupper(static_cast<unsigned char>(c))) {
    case '0': return "0006464000 0046";
    case '1': return "152620 1030";
    case '2': return "064643030040";
    case '3': return "06464000 1343";
    case '4': return "060343 4640";
    case '5': return "4606033342413000";
    case '6': return "460600404303";
    case '7': return "064640";
    case '8': return "0006464000 0343";
    case '9': return "430306464000";
    case 'A': return "000516364540 0343";
    case 'B': return "00063645443303 3342413000";
    case 'C': return "46060040";
    case 'D': return "00063645413000";
    case 'E': return "46060040 0333";
    case 'F': return "460600 0333";
    case 'G': return "460600404323";
    case 'H': return "0006 4046 0343";
    case 'I': return "1636 2620 1030";
    case 'J': return "4641301001";
    case 'K': return "0006 4603 1440";
    case 'L': return "060040";
    case 'M': return "0006244640";
    case 'N': return "00064046";
    case 'O': return "0006464000";
    case 'P': return "0006464303";
    case 'Q': return "0006464000 2240";
    case 'R': return "0006464303 1340";
    case 'S': return "460603434000";
    case 'T': return "0646 2620";
    case 'U': return "06004046";
    case 'V': return "062046";
    case 'W': return "0600224046";
    case 'X': return "0046 0640";
    case 'Y': return "0623 4623 2320";
    case 'Z': return "06460040";
    case '.': return "2021";
    case ',': return "2110";
    case ':': return "2122 2425";
    case '-': return "0343";
    case '+': return "0343 2125";
    case '/': return "0046";
    case '(': return "36151130";
    case ')': return "16353110";
    case '=': return "0242 0444";
    case '_': return "0040";
    case '\'': return "2625";
    case '!': return "2622 2021";
    case '%': return "0046 0515 3141";
    case ' ': return "";
    default: return "05163645442322 2021";  // "?"
    }
}

}  // namespace

void OverlayQv::DrawText(float x, float y, const char *text) {
    if (!text) return;
    const float unit = static_cast<float>(2.0 / zoom);  // 6 units: 12 viewer pixels
    float left = x, bottom = y;
    for (const char *c = text; *c; ++c) {
        if (*c == '\n') {
            left = x;
            bottom -= 9.0f * unit;
            continue;
        }
        const char *strokes = glyph(*c);
        while (*strokes) {
            glBegin(GL_LINE_STRIP);
            for (; strokes[0] && strokes[0] != ' ' && strokes[1]; strokes += 2)
                glVertex2f(left + (strokes[0] - '0') * unit, bottom + (strokes[1] - '0') * unit);
            glEnd();
            while (*strokes == ' ') ++strokes;
        }
        left += 6.0f * unit;
    }
}
