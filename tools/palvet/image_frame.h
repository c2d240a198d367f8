#ifndef PALVET_TOOLS_IMAGE_FRAME_H
#define PALVET_TOOLS_IMAGE_FRAME_H

// Frames of the tool: every input is turned into one top-down ARGB picture,
// worked on, and written out in the format asked for.

#include <string>
#include <vector>

namespace tool {

struct Frame {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> argb;  // top-down, pitch width * 4
    bool hasAlpha = false;            // came from a source with real alpha

    int Pitch() const { return width * 4; }
};

enum class Format { Bmp, I420, Nv12, Nv21, Yuy2, Uyvy, Rgb24, Rgb565, Argb };

// "bmp", "i420", ... (case-insensitive); an empty name is guessed from the
// file's extension. Fails with bad usage when neither says.
Format FormatFromName(std::string const& name, std::string const& path);
char const* FormatName(Format format);
std::string FormatList();

// Raw frames need their size; BMP files carry it.
Frame LoadFrame(std::string const& path, Format format, int width, int height);
// bmpBits: 24 or 32 for BMP output (0 = 32 when the frame has alpha, else 24).
void SaveFrame(Frame const& frame, std::string const& path, Format format, int bmpBits);

Frame Rotate(Frame const& frame, int degrees);
// Places frame on a new canvas of the given size, with DrawBuffer's
// placement (scale and mode), over a background colour.
Frame Fit(Frame const& frame, int width, int height, int scale, int mode, unsigned int background);

// The pixels of a BMP file the library loaded (padded rows, bottom-up) as a
// top-down ARGB frame; handles 16-, 24- and 32-bit pictures.
Frame FrameFromBmpPixels(unsigned char const* pixels, int width, int height, int bpp,
                         std::string const& path);

}  // namespace tool

#endif
