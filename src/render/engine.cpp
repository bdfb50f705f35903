#include "render/engine.h"

#include "support/messages.h"
#include "support/numbers.h"
#include "support/runtime_error.h"

namespace dxfimport {
namespace {

constexpr const char* kEngineModule = "dxfengvb";

// Runs a conversion; a run-time error in it is reported under `procedure` and gives 0.
template <class F>
auto Reported(const char* procedure, const char* module, F&& f) -> decltype(f()) {
  try {
    return f();
  } catch (const RunTimeError& e) {
    ReportError(procedure, module, e.text(), e.number());
    return {};
  }
}

int32_t Add(int32_t a, int32_t b) {
  int32_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) throw RunTimeError(kErrOverflow);
  return sum;
}

}  // namespace

int DXFEngine::Initialize(int32_t deviceHeight, double originX, double originY, double scale,
                          int32_t windowHandle) {
  DeviceHeight = deviceHeight;
  OriginX = originX;
  OriginY = originY;
  ViewScale = scale;
  ViewWindowHandle = windowHandle;
  return 1;
}

int32_t DXFEngine::CvtX(double x) const {
  return Reported("CvtX", kEngineModule, [&] { return CLng((x - OriginX) * ViewScale); });
}

int32_t DXFEngine::CvtY(double y) const {
  return Reported("CvtY", kEngineModule,
                  [&] { return CLng(double(DeviceHeight) - (y - OriginY) * ViewScale); });
}

int32_t DXFEngine::CvtTxtHt(double height, double factor) const {
  return Reported("CvtTxtHt", kEngineModule, [&] { return CLng(height * factor * ViewScale); });
}

bool DXFEngine::MakeTestRect(const RECT& src, RECT& dst) {
  return Reported("MakeTestRect", "Dxfin275", [&] {
    dst.left = Add(src.left, 1);
    dst.top = Add(src.top, 1);
    dst.right = src.right;
    dst.bottom = src.bottom;
    if (Add(src.left, 1) == src.right) dst.left = Add(src.left, -1);
    if (Add(src.top, 1) == src.bottom) dst.top = Add(src.top, -1);
    return true;
  });
}

}  // namespace dxfimport
