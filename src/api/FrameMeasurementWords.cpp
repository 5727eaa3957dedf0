// The members on 16-bit words through a typed, read-only pointer: each forwards to the
// byte-pointer member, which only ever reads the frame.
#include <cstdint>

#include "talonvireo/FrameMeasurement.h"

namespace talonvireo {

namespace {
unsigned char* bytesOf(const std::uint16_t* raw) {
    return reinterpret_cast<unsigned char*>(const_cast<std::uint16_t*>(raw));
}
}  // namespace

int talonvireoSFR(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                  SFRResult& result) {
    return talonvireoSFR(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                  SFRResult_HLX5& result) {
    return talonvireoSFR(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw14(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                        SFRResult& result) {
    return talonvireoSFR_raw14(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw14(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return talonvireoSFR_raw14(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw16(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                        SFRResult_HLX5& result) {
    return talonvireoSFR_raw16(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw16_HLX5_8K(const std::uint16_t* raw, int width, int height,
                                const SFRParam& param, SFRResult_HLX5& result) {
    return talonvireoSFR_raw16_HLX5_8K(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw10_HLX6C(const std::uint16_t* raw, int width, int height,
                              const SFRParam& param, SFRResult_HLX5& result) {
    return talonvireoSFR_raw10_HLX6C(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw14_HLX6C(const std::uint16_t* raw, int width, int height,
                              const SFRParam& param, SFRResult_HLX5& result) {
    return talonvireoSFR_raw14_HLX6C(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C(const std::uint16_t* raw, int width, int height,
                              const SFRParam& param, SFRResult_HLX5& result) {
    return talonvireoSFR_raw16_HLX6C(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw16_HLX6C_8K(const std::uint16_t* raw, int width, int height,
                                 const SFRParam& param, SFRResult_HLX5& result) {
    return talonvireoSFR_raw16_HLX6C_8K(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw10_RQ8(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return talonvireoSFR_raw10_RQ8(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw14_RQ8(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return talonvireoSFR_raw14_RQ8(bytesOf(raw), width, height, param, result);
}

int talonvireoSFR_raw16_RQ8(const std::uint16_t* raw, int width, int height, const SFRParam& param,
                            SFRResult_HLX5& result) {
    return talonvireoSFR_raw16_RQ8(bytesOf(raw), width, height, param, result);
}

}  // namespace talonvireo
