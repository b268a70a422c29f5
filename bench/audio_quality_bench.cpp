// Rate conversion quality, ours and the peer libraries side by side:
//  - SNR of a 1 kHz sine at -1 dBFS, 48000 -> 44100 and 44100 -> 48000: the
//    output is fitted with the best sine of 1 kHz (amplitude, phase, offset),
//    so a converter's delay does not count; what is left is noise and distortion.
//  - 21 kHz at -1 dBFS, 48000 -> 44100: the level of its alias, which the
//    polyphase structure folds to 48000 - 21000 = 27000 -> 44100 - 27000 =
//    17100 Hz, in dB below the input tone; the level of everything that is not
//    the 21 kHz tone; and how much of the tone itself passes (the pass band
//    edge differs between designs).
//  - the image of 21 kHz after 44100 -> 48000, at 44100 - 21000 = 23100 Hz.
// Stereo, 3 s per measurement; 0.5 s at each end are left out.
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "audio_resamplers.h"

namespace {

constexpr int kChannels = 2;
constexpr double kAmplitude = 0.8912509381337456;  // -1 dBFS

std::vector<float> Tone(double hz, int rate, int seconds) {
  std::vector<float> v(static_cast<size_t>(rate) * seconds * kChannels);
  for (size_t f = 0; f < v.size() / kChannels; ++f) {
    const float s = static_cast<float>(kAmplitude * std::sin(2 * M_PI * hz * f / rate));
    for (int c = 0; c < kChannels; ++c) v[f * kChannels + c] = s;
  }
  return v;
}

struct Fit {
  double amplitude;  // of the fitted sine
  double residual;   // rms of what the sine (and offset) leave
  double total;      // rms of the whole window
};

// Least squares of a sin + b cos + c over channel 0, frames [from, to).
Fit FitSine(const std::vector<float>& x, double hz, int rate, size_t from, size_t to) {
  double s[3][3] = {}, r[3] = {};
  for (size_t f = from; f < to; ++f) {
    const double w = 2 * M_PI * hz * f / rate;
    const double b[3] = {std::sin(w), std::cos(w), 1.0};
    const double y = x[f * kChannels];
    for (int i = 0; i < 3; ++i) {
      r[i] += b[i] * y;
      for (int j = 0; j < 3; ++j) s[i][j] += b[i] * b[j];
    }
  }
  // Gaussian elimination on the 3 x 3 normal equations.
  for (int i = 0; i < 3; ++i) {
    for (int k = i + 1; k < 3; ++k) {
      const double m = s[k][i] / s[i][i];
      for (int j = i; j < 3; ++j) s[k][j] -= m * s[i][j];
      r[k] -= m * r[i];
    }
  }
  double c[3];
  for (int i = 2; i >= 0; --i) {
    double v = r[i];
    for (int j = i + 1; j < 3; ++j) v -= s[i][j] * c[j];
    c[i] = v / s[i][i];
  }
  double res = 0.0, tot = 0.0;
  for (size_t f = from; f < to; ++f) {
    const double w = 2 * M_PI * hz * f / rate;
    const double y = x[f * kChannels];
    const double e = y - (c[0] * std::sin(w) + c[1] * std::cos(w) + c[2]);
    res += e * e;
    tot += y * y;
  }
  const double n = static_cast<double>(to - from);
  return {std::hypot(c[0], c[1]), std::sqrt(res / n), std::sqrt(tot / n)};
}

double Db(double ratio) { return 20.0 * std::log10(ratio > 1e-30 ? ratio : 1e-30); }

struct Row {
  std::string name;
  double snrDown = NAN, snrUp = NAN, alias = NAN, other = NAN, pass = NAN, image = NAN;
};

template <typename Fn>
void Each(int inRate, int outRate, std::vector<Row>* rows, Fn fn) {
  size_t i = 0;
  for (auto& r : bench_audio::AllResamplers()) {
    if (rows->size() <= i) rows->push_back(Row{r->Name()});
    if (r->Setup(inRate, outRate, kChannels)) fn(r.get(), &(*rows)[i]);
    ++i;
  }
}

}  // namespace

int main() {
  const int seconds = 3;
  std::vector<Row> rows;
  for (int dir = 0; dir < 2; ++dir) {
    const int in = dir == 0 ? 48000 : 44100, out = dir == 0 ? 44100 : 48000;
    const std::vector<float> tone = Tone(1000.0, in, seconds);
    Each(in, out, &rows, [&](bench_audio::Resampler* r, Row* row) {
      std::vector<float> y;
      r->Run(tone.data(), tone.size() / kChannels, &y);
      const size_t frames = y.size() / kChannels;
      const Fit fit = FitSine(y, 1000.0, out, out / 2, frames - out / 2);
      (dir == 0 ? row->snrDown : row->snrUp) = Db(fit.amplitude / std::sqrt(2.0) / fit.residual);
    });
  }
  {
    const std::vector<float> tone = Tone(21000.0, 48000, seconds);
    Each(48000, 44100, &rows, [&](bench_audio::Resampler* r, Row* row) {
      std::vector<float> y;
      r->Run(tone.data(), tone.size() / kChannels, &y);
      const size_t frames = y.size() / kChannels;
      const Fit alias = FitSine(y, 17100.0, 44100, 22050, frames - 22050);
      const Fit main = FitSine(y, 21000.0, 44100, 22050, frames - 22050);
      row->alias = Db(alias.amplitude / kAmplitude);
      row->other = Db(main.residual * std::sqrt(2.0) / kAmplitude);
      row->pass = Db(main.amplitude / kAmplitude);
    });
  }
  {
    const std::vector<float> tone = Tone(21000.0, 44100, seconds);
    Each(44100, 48000, &rows, [&](bench_audio::Resampler* r, Row* row) {
      std::vector<float> y;
      r->Run(tone.data(), tone.size() / kChannels, &y);
      const size_t frames = y.size() / kChannels;
      const Fit image = FitSine(y, 23100.0, 48000, 24000, frames - 24000);
      row->image = Db(image.amplitude / kAmplitude);
    });
  }
  std::printf("%-30s %12s %12s %14s %14s %12s %14s\n", "converter", "SNR 48->44.1", "SNR 44.1->48",
              "21k alias dB", "21k other dB", "21k pass dB", "21k image dB");
  std::printf("%-30s %12s %12s %14s %14s %12s %14s\n", "", "1k -1dBFS", "1k -1dBFS", "(at 17.1k)",
              "(not 21k)", "", "(44.1->48)");
  for (const Row& r : rows) {
    std::printf("%-30s %12.1f %12.1f %14.1f %14.1f %12.2f %14.1f\n", r.name.c_str(), r.snrDown,
                r.snrUp, r.alias, r.other, r.pass, r.image);
  }
  return 0;
}
