#pragma once

#include <QByteArray>
#include <QImage>

namespace lumagrid {

// What the four channels of a buffer hold before the conversion.
enum class ColorModel : unsigned char {
  gray,          // the same value in red, green and blue
  rgb,           // red, green, blue and alpha
  cmyk,          // cyan, magenta, yellow and black; 255 is full ink
  invertedCmyk,  // the same with 255 as no ink
  lab,           // CIE L*, a* and b* as ICC profiles code them, and alpha
};

// Turns pixels into sRGB, as their ICC profile says. `pixels` has 8 or 16 bits in each of four channels (RGBX8888,
// RGBA8888, RGBX64, RGBA64; alpha not premultiplied), the result is RGBX8888 or RGBA8888; 8-bit pixels are converted in
// place. Without a profile, or with one that is damaged, made for another model or beyond reason (ProfileCost.h), gray
// and RGB count as sRGB, and CMYK as inks that filter light: red is what cyan and black let through. Lab always has
// labProfile(). Profiles that say what sRGB says, within rounding, cost nothing. Any thread; the last few transforms
// are kept for all threads.
[[nodiscard]] QImage convertedToSrgb(QImage pixels, ColorModel model, const QByteArray& iccProfile);

// The profile of Lab itself, for the white of profiles (D50), which comes out as white.
[[nodiscard]] QByteArray labProfile();

}  // namespace lumagrid
