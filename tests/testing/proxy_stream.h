#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace dxfimport::testing {

// Little-endian bytes of a proxy graphics command's data.
class ProxyData {
 public:
  ProxyData& Int(int32_t v) { return Put(&v, 4); }
  ProxyData& Real(double v) { return Put(&v, 8); }
  ProxyData& Point(double x, double y, double z = 0) { return Real(x).Real(y).Real(z); }
  // A string with its zero byte, padded to four bytes.
  ProxyData& Ansi(const std::string& s) {
    bytes_ += s;
    bytes_.push_back('\0');
    while (bytes_.size() % 4) bytes_.push_back('\0');
    return *this;
  }
  ProxyData& Utf16(const std::u16string& s) {
    for (char16_t c : s) Put(&c, 2);
    const char16_t end = 0;
    Put(&end, 2);
    while (bytes_.size() % 4) bytes_.push_back('\0');
    return *this;
  }
  ProxyData& Bytes(const std::string& b) {
    bytes_ += b;
    return *this;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  ProxyData& Put(const void* v, std::size_t n) {
    bytes_.append(static_cast<const char*>(v), n);
    return *this;
  }
  std::string bytes_;
};

// A proxy graphics stream built command by command.
class ProxyStream {
 public:
  ProxyStream& Add(int32_t type, const ProxyData& data = {}) {
    commands_.emplace_back(type, data.bytes());
    return *this;
  }
  std::string Bytes() const {
    std::string body;
    for (const auto& [type, data] : commands_)
      body += ProxyData().Int(int32_t(8 + data.size())).Int(type).bytes() + data;
    return ProxyData().Int(int32_t(8 + body.size())).Int(int32_t(commands_.size())).bytes() + body;
  }
  // The stream as 310 chunks of at most 127 bytes, after its byte count under `sizeCode`.
  std::vector<std::pair<int, std::string>> Pairs(int sizeCode = 92) const {
    const std::string bytes = Bytes();
    std::vector<std::pair<int, std::string>> pairs{{sizeCode, std::to_string(bytes.size())}};
    static const char* digits = "0123456789ABCDEF";
    for (std::size_t at = 0; at < bytes.size(); at += 127) {
      std::string hex;
      for (std::size_t i = at; i < std::min(bytes.size(), at + 127); ++i) {
        hex.push_back(digits[uint8_t(bytes[i]) >> 4]);
        hex.push_back(digits[uint8_t(bytes[i]) & 15]);
      }
      pairs.emplace_back(310, hex);
    }
    return pairs;
  }

 private:
  std::vector<std::pair<int32_t, std::string>> commands_;
};

// The bit-coded values of the light-weight polyline command, most significant bit first.
class ProxyBits {
 public:
  ProxyBits& Put(uint32_t value, int bits) {
    for (int i = bits - 1; i >= 0; --i) {
      if (used_ % 8 == 0) bytes_.push_back('\0');
      if ((value >> i) & 1) bytes_.back() = char(uint8_t(bytes_.back()) | (0x80 >> (used_ % 8)));
      ++used_;
    }
    return *this;
  }
  ProxyBits& Byte8(int v) { return Put(1, 2).Put(uint32_t(v), 8); }  // a short or long below 256
  ProxyBits& Short(int v) { return Put(0, 2).Put(uint32_t(v) & 0xFF, 8).Put((uint32_t(v) >> 8) & 0xFF, 8); }
  ProxyBits& RawReal(double v) {
    uint8_t b[8];
    std::memcpy(b, &v, 8);
    for (uint8_t byte : b) Put(byte, 8);
    return *this;
  }
  ProxyBits& Real(double v) { return Put(0, 2).RawReal(v); }
  ProxyBits& Changed(double v) { return Put(3, 2).RawReal(v); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
  int used_ = 0;
};

}  // namespace dxfimport::testing
