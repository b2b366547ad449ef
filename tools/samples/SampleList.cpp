#include "SampleList.h"

namespace lumagrid::samples {

// clang-format off: one sample a line, to be read as a table.
std::span<const Sample> sampleList() {
  using enum HourName;
  static constexpr auto kSamples = std::to_array<Sample>({
      // Numbers that sort by value, not by letter.
      {"IMG_1.jpg", paintMountains, Sunset},
      {"IMG_2.jpg", paintLeaves, Autumn},
      {"IMG_3.jpg", paintSea, Gold},
      {"IMG_9.jpg", paintNightSky, Night},
      {"IMG_10.jpg", paintForest, Mint},
      {"IMG_11.jpg", paintBalloons, Dawn},
      {"IMG_20.jpg", paintCity, Dusk},
      {"IMG_100.jpg", paintMeadow, Noon},
      {"img_21.JPG", paintDunes, Gold},
      // The usual proportions of a camera, lying and standing.
      {"Above the clouds.jpg", paintMountains, Dawn},
      {"Autumn path.jpg", paintForest, Autumn},
      {"Bay at sunset.jpg", paintSea, Sunset},
      {"Blue ridge.jpg", paintMountains, Ice},
      {"City lights.jpeg", paintCity, Night},
      {"Evening lamps.jpg", paintLights, Sunset},
      {"Fireflies.jpg", paintLights, Mint},
      {"First snow.jpg", paintForest, Ice},
      {"Harbour, early.jpg", paintSea, Dawn},
      {"High noon.jpg", paintDunes, Noon},
      {"Morning fog.jpg", paintForest, Dawn},
      {"Northern lights.jpg", paintNightSky, Dusk},
      {"Old town.jpg", paintCity, Sunset, 1067, 1600},
      {"Pink valley.jpg", paintMountains, Rose},
      {"Pines.jpg", paintForest, Dusk, 1067, 1600},
      {"Poppies.jpg", paintMeadow, Gold},
      {"Red leaves.jpg", paintLeaves, Sunset, 1067, 1600},
      {"Rose dunes.jpg", paintDunes, Rose},
      {"Silent bay.jpg", paintSea, Night},
      {"Skyline.jpg", paintCity, Rose},
      {"Spring field.jpg", paintMeadow, Mint},
      {"Stars over the hut.jpg", paintNightSky, Mint, 1067, 1600},
      {"Summer balloons.jpg", paintBalloons, Noon},
      {"Teal lake.jpg", paintSea, Mint},
      {"Balloons over the pass.jpg", paintBalloons, Rose, 1067, 1600},
      {"Winter bokeh.jpg", paintLights, Ice},
      // Other proportions.
      {"Panorama of the range.jpg", paintMountains, Gold, 2400, 600},
      {"Panorama of the coast.jpg", paintSea, Rose, 2400, 600},
      {"Square leaves.jpg", paintLeaves, Mint, 1200, 1200},
      {"Square town.jpg", paintCity, Gold, 1200, 1200},
      {"Tall sky.jpg", paintNightSky, Ice, 500, 1600},
      // Names in many scripts, and what looks like markup.
      {"東京の夕暮れ.jpg", paintCity, Dusk},
      {"富士山.png", paintMountains, Rose, 960, 640},
      {"صورة الصحراء.jpg", paintDunes, Sunset},
      {"Осенний лес.jpg", paintForest, Autumn},
      {"Πέλαγος.jpg", paintSea, Noon},
      {"🌸 spring 🌊.jpg", paintMeadow, Rose},
      {"Crème brûlée — été.jpg", paintLights, Gold},
      {"<b>Bold & fine.jpg", paintBalloons, Gold},
      {"A long walk along the ridge from the first hut to the last, with a halt at every spring, a look back at every "
       "bend, and a picture of the valley in the light of the late afternoon.jpg",
       paintMountains, Autumn},
      {"長い名前の写真、山の上から見た海と空と雲と町と川と橋と森と畑と道.jpg", paintSea, Dusk},
      // Every format that the program opens.
      {"Format avif.avif", paintBalloons, Mint, 960, 640},
      {"Format avif alpha.avif", nullptr, Autumn, 640, 640, Variant::Alpha},
      {"Format bmp.bmp", paintDunes, Dawn, 640, 427},
      {"Format gif.gif", paintMeadow, Gold, 640, 427},
      {"Format gif animated.gif", nullptr, Sunset, 480, 320, Variant::Animated},
      {"Format heic.heic", paintForest, Gold, 1200, 800},
      {"Format heif.heif", paintMountains, Mint, 1200, 800},
      {"Format jpeg grey.jpeg", paintMountains, Night, 1600, 1067, Variant::Grey},
      {"Format jpeg progressive.jpg", paintLeaves, Gold, 1600, 1067, Variant::Progressive},
      {"Format png.png", paintCity, Mint, 960, 640},
      {"Format png alpha.png", nullptr, Mint, 800, 800, Variant::Alpha},
      {"Format tif.tif", paintSea, Ice, 960, 640},
      {"Format tiff.tiff", paintLights, Dusk, 960, 640},
      {"Format webp.webp", paintForest, Rose, 1600, 1067},
      {"Format webp alpha.webp", nullptr, Rose, 800, 800, Variant::Alpha},
      // The same arrow, stored in all eight ways: each points up when shown.
      {"Orientation 1.jpg", nullptr, Noon, 900, 600, Variant::Turned, 1},
      {"Orientation 2.jpg", nullptr, Noon, 900, 600, Variant::Turned, 2},
      {"Orientation 3.jpg", nullptr, Noon, 900, 600, Variant::Turned, 3},
      {"Orientation 4.jpg", nullptr, Noon, 900, 600, Variant::Turned, 4},
      {"Orientation 5.jpg", nullptr, Noon, 900, 600, Variant::Turned, 5},
      {"Orientation 6.jpg", nullptr, Noon, 900, 600, Variant::Turned, 6},
      {"Orientation 7.jpg", nullptr, Noon, 900, 600, Variant::Turned, 7},
      {"Orientation 8.jpg", nullptr, Noon, 900, 600, Variant::Turned, 8},
      // A file that stops in the middle of its header.
      {"Damaged.jpg", paintMountains, Noon, 640, 427, Variant::Damaged},
  });
  return kSamples;
}
// clang-format on

}  // namespace lumagrid::samples
