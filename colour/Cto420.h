// Cto420: packed pictures to planar YUV, and planar 4:2:0 to the other YUV
// layouts.
//
// RGB input knows the BT.601 weights only, in two sets: the studio set (full
// range RGB to Y 16..235, chroma 16..240) and the straight set (unit gain, for
// the shifted RGB formats whose black is 0 and white 219, with the black level
// added to Y). Weights have 13 fractional bits; see SetCoefficients.
//
// Chroma of RGB input is sited on the even columns (the left pixel of each
// pair, no horizontal filter). Vertically the frame walk takes the mean of a
// line pair; the field walk weights the lines of one field 3/4 and 1/4, so that
// each field's chroma sits where interlaced 4:2:0 puts it. The Shift walks move
// the picture one line down, so the two fields change their order in time.
//
// Pitches are positive byte counts. Every picture operation answers false,
// with nothing written, when the picture is smaller than one unit of its walk
// or has a height that its walk cannot serve (a 4:2:0 source whose walk would
// read a chroma line behind its plane); true otherwise. Lines and columns
// beyond the last whole unit of a walk are not written.
//
// Cto420_MMX is the processor form: the same sums on 16-bit lanes, taken from
// coefficient vectors of its own, run by the row kernels of a SimdLevel. Its
// bytes equal those of Cto420 everywhere but in YUV420ToYUY2Frame and
// YUV420ToYUY2Field, which round (r = 2, s = 4) where the plain form truncates.
#ifndef ORV_COLOUR_CTO420_H_
#define ORV_COLOUR_CTO420_H_

#include <cstdint>

#include "colour/colour_rows.h"
#include "foundation/cpu_info.h"

namespace orv {

class Cto420 {
 public:
  Cto420(int32_t mode, int32_t black);
  virtual ~Cto420() = default;
  Cto420(const Cto420&) = delete;
  Cto420& operator=(const Cto420&) = delete;

  // Mode 1 loads the straight set with `black` added to Y; any other mode the
  // studio set with black 16.
  virtual void SetCoefficients(int32_t mode, int32_t black);

  virtual bool RGB32ToYUV420Frame(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB32ToYUV420FrameUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool RGB32ToYUV420Field(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB32ToYUV420FieldUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool RGB32ToYUV420Shift(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB32ToYUV420ShiftUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420Frame(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420FrameUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420Field(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420FieldUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420Shift(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                  uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch,
                                  uint8_t* v, int32_t vPitch);
  virtual bool RGB24ToYUV420ShiftUp(const uint8_t* src, int32_t pitch, int32_t width,
                                    int32_t height, uint8_t* y, int32_t yPitch, uint8_t* u,
                                    int32_t uPitch, uint8_t* v, int32_t vPitch);
  virtual bool YUY2ToYUV420Frame(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                 uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                                 int32_t vPitch);
  virtual bool YUY2ToYUV420Field(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                 uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                                 int32_t vPitch);
  virtual bool YUY2ToYUV420Shift(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                                 uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                                 int32_t vPitch);
  virtual bool YUY2ToYUV422(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                            uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                            int32_t vPitch);
  virtual bool RGB24ToYUV422(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                             uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                             int32_t vPitch);
  virtual bool RGB24ToYUV422Up(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                               uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                               int32_t vPitch);
  virtual bool RGB32ToYUV422(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                             uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                             int32_t vPitch);
  virtual bool RGB32ToYUV422Up(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                               uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                               int32_t vPitch);
  virtual bool YUV420ToYUY2Frame(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dst, int32_t dstPitch);
  virtual bool YUV420ToYUY2Field(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dst, int32_t dstPitch);
  virtual bool YUV420ToYUV422Frame(const uint8_t* y, int32_t yPitch, const uint8_t* u,
                                   int32_t uPitch, const uint8_t* v, int32_t vPitch, int32_t width,
                                   int32_t height, uint8_t* dy, int32_t dyPitch, uint8_t* du,
                                   int32_t duPitch, uint8_t* dv, int32_t dvPitch);
  virtual bool YUV420ToYUV422Field(const uint8_t* y, int32_t yPitch, const uint8_t* u,
                                   int32_t uPitch, const uint8_t* v, int32_t vPitch, int32_t width,
                                   int32_t height, uint8_t* dy, int32_t dyPitch, uint8_t* du,
                                   int32_t duPitch, uint8_t* dv, int32_t dvPitch);
  virtual bool YUV420ToUYVYFrame(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dst, int32_t dstPitch);
  virtual bool YUV420ToUYVYField(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dst, int32_t dstPitch);
  // The UV plane's line step is `dstPitch`; the three trailing values are not used.
  virtual bool YUV420ToNV12Planes(const uint8_t* y, int32_t yPitch, const uint8_t* u,
                                  int32_t uPitch, const uint8_t* v, int32_t vPitch, int32_t width,
                                  int32_t height, uint8_t* dy, int32_t dstPitch, uint8_t* duv,
                                  int32_t unused1, uint8_t* unused2, int32_t unused3);
  // Y and UV planes in one buffer: the UV plane starts at dst + height x dstPitch.
  virtual bool YUV420ToNV12(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                            const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                            uint8_t* dst, int32_t dstPitch);

  int32_t black() const { return coefs_.black; }
  int32_t coefMode() const { return coefMode_; }
  const colour::PlanarCoefs& coefficients() const { return coefs_; }

 protected:
  // Walk parameters of a form: the coefficients its sums use, its row
  // kernels, and the rounding terms of the two YUY2 outputs.
  struct Form {
    const colour::PlanarCoefs* coefs;
    const colour::PlanarRows* rows;
    int yuy2FrameRound;
    int yuy2FieldRound;
  };
  virtual Form GetForm() const;

  static colour::PlanarCoefs MakeCoefficients(int32_t mode, int32_t black);

  colour::PlanarCoefs coefs_;
  int32_t coefMode_;
};

class Cto420_MMX : public Cto420 {
 public:
  Cto420_MMX(int32_t mode, int32_t black, SimdLevel level = DetectSimdLevel());

  void SetCoefficients(int32_t mode, int32_t black) override;
  SimdLevel level() const { return level_; }

  // The coefficient vectors: each weight and the black level in four equal lanes.
  struct Vectors {
    int16_t black[4];
    int16_t rToY[4], gToY[4], bToY[4];
    int16_t rToU[4], gToU[4], bToU[4];
    int16_t rToV[4], gToV[4], bToV[4];
  };
  const Vectors& vectors() const { return vectors_; }

 protected:
  Form GetForm() const override;

 private:
  Vectors vectors_;
  colour::PlanarCoefs laneCoefs_;  // lane 0 of the vectors, as the walks take them
  SimdLevel level_;
};

}  // namespace orv

#endif  // ORV_COLOUR_CTO420_H_
