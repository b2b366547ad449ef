#include "JpegWriter.h"

#include <cmath>
#include <cstdio>  // jpeglib.h needs it first
#include <cstdlib>
#include <random>

#include <jpeglib.h>

namespace samples {
namespace {

std::vector<JSAMPLE> rowOf(const JpegSpec& spec, int y, size_t channels, std::minstd_rand& random) {
  std::vector<JSAMPLE> row;
  for (int x = 0; x < spec.size.width(); ++x) {
    for (size_t channel = 0; channel < channels; ++channel) {
      const double phase = static_cast<double>(channel) + 1;
      const double smooth = 127.5 + 120 * std::sin(x * 0.021 * phase + y * 0.034) * std::cos(y * 0.017 * phase);
      const double noise = static_cast<double>(random() % 256);
      const double edge = (x / 37 + y / 23) % 5 == 0 ? 0.5 : 1;
      row.push_back(static_cast<JSAMPLE>((smooth * (1 - spec.roughness) + noise * spec.roughness) * edge));
    }
  }
  return row;
}

void setCoding(jpeg_compress_struct& jpeg, JpegSpec::Coding coding, std::vector<jpeg_scan_info>& scans) {
  switch (coding) {
    case JpegSpec::Coding::huffman:
      break;
    case JpegSpec::Coding::optimizedHuffman:
      jpeg.optimize_coding = TRUE;
      break;
    case JpegSpec::Coding::progressive:
      jpeg_simple_progression(&jpeg);
      break;
    case JpegSpec::Coding::arithmetic:
      jpeg.arith_code = TRUE;
      break;
    case JpegSpec::Coding::scanPerComponent:
      for (int index = 0; index < jpeg.num_components; ++index) {
        jpeg_scan_info scan{};
        scan.comps_in_scan = 1;
        scan.component_index[0] = index;
        scan.Se = 63;
        scans.push_back(scan);
      }
      jpeg.scan_info = scans.data();
      jpeg.num_scans = static_cast<int>(scans.size());
      break;
  }
}

}  // namespace

QByteArray writtenJpeg(const JpegSpec& spec) {
  using Colors = JpegSpec::Colors;
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);  // ends the program: what is asked for here can be written
  jpeg_create_compress(&jpeg);
  unsigned char* written = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &written, &size);
  const bool isInks = spec.colors == Colors::cmyk || spec.colors == Colors::ycck;
  jpeg.image_width = static_cast<JDIMENSION>(spec.size.width());
  jpeg.image_height = static_cast<JDIMENSION>(spec.size.height());
  jpeg.input_components = spec.colors == Colors::gray ? 1 : isInks ? 4 : 3;
  jpeg.in_color_space = spec.colors == Colors::gray ? JCS_GRAYSCALE : isInks ? JCS_CMYK : JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, spec.colors == Colors::gray    ? JCS_GRAYSCALE
                             : spec.colors == Colors::rgb   ? JCS_RGB
                             : spec.colors == Colors::yCbCr ? JCS_YCbCr
                             : spec.colors == Colors::cmyk  ? JCS_CMYK
                                                            : JCS_YCCK);
  jpeg_set_quality(&jpeg, spec.quality, TRUE);
  for (size_t index = 0; index < spec.sampling.size(); ++index) {
    jpeg.comp_info[index].h_samp_factor = spec.sampling[index].first;
    jpeg.comp_info[index].v_samp_factor = spec.sampling[index].second;
  }
  jpeg.restart_interval = static_cast<unsigned>(spec.restartInterval);
  std::vector<jpeg_scan_info> scans;
  setCoding(jpeg, spec.coding, scans);
  jpeg_start_compress(&jpeg, TRUE);
  std::minstd_rand random(3);
  for (int y = 0; y < spec.size.height(); ++y) {
    std::vector<JSAMPLE> row = rowOf(spec, y, static_cast<size_t>(jpeg.input_components), random);
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&jpeg, rows, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const QByteArray bytes(reinterpret_cast<const char*>(written), static_cast<qsizetype>(size));
  std::free(written);
  return bytes;
}

}  // namespace samples
