// Arbitrary bytes as the pairs of one HATCH (its boundary paths, edges, pattern lines and
// gradient), read by the modern profile and drawn.
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) { return dxfimport::fuzz::StartGui(argc, argv); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace dxfimport;
  const std::string file = "0\nSECTION\n2\nENTITIES\n0\nHATCH\n8\n0\n" +
                           std::string(reinterpret_cast<const char*>(data), size) +
                           "\n0\nLINE\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDSEC\n0\nEOF\n";
  fuzz::LoadModern(file, [](Drawing& drawing) { fuzz::DrawModern(drawing); });
  return 0;
}
