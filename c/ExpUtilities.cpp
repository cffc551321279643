#include "ExpUtilities.h"

#include <algorithm>
#include <list>
#include <utility>

#include "ExpAttributeVisitor.h"
#include "KeptValues.h"
#include "SmallObjectPool.h"
#include "StepStrings.h"
#include "ValueText.h"
#include "VelmarClasses.h"

descriptive_exception::descriptive_exception(const std::string& message) : message_(message) {}

descriptive_exception::~descriptive_exception() = default;

const char* descriptive_exception::what() const noexcept { return message_.c_str(); }

namespace VELMAR {

// ------------------------------------------------------------------------------------------------------ Text
// utilities

std::string ReplaceString(std::string text, std::string from, std::string to) {
  if (from.empty()) return text;
  std::string result;
  std::size_t begin = 0;
  for (std::size_t find; (find = text.find(from, begin)) != std::string::npos; begin = find + from.size()) {
    result.append(text, begin, find - begin);
    result += to;
  }
  result.append(text, begin, std::string::npos);
  return result;
}

std::string ToUpperString(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

std::string ToLowerString(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

// ------------------------------------------------------------------------------------------------ Code pages

// Every part of ISO/IEC 8859 begins with ASCII and the C1 control characters: below A0 a byte is itself.
// clang-format off
#define VELMAR_BELOW_A0                                                                            \
  0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,  \
  0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F,  \
  0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F,  \
  0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0x3E, 0x3F,  \
  0x40, 0x41, 0x42, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4A, 0x4B, 0x4C, 0x4D, 0x4E, 0x4F,  \
  0x50, 0x51, 0x52, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5A, 0x5B, 0x5C, 0x5D, 0x5E, 0x5F,  \
  0x60, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x6B, 0x6C, 0x6D, 0x6E, 0x6F,  \
  0x70, 0x71, 0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A, 0x7B, 0x7C, 0x7D, 0x7E, 0x7F,  \
  0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x8B, 0x8C, 0x8D, 0x8E, 0x8F,  \
  0x90, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9A, 0x9B, 0x9C, 0x9D, 0x9E, 0x9F

// The upper halves of ISO/IEC 8859-N as Unicode, eight to a row; 0 marks a byte that is not assigned.
const unsigned int page2[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0104, 0x02D8, 0x0141, 0x00A4, 0x013D, 0x015A, 0x00A7,  // A0
    0x00A8, 0x0160, 0x015E, 0x0164, 0x0179, 0x00AD, 0x017D, 0x017B,  // A8
    0x00B0, 0x0105, 0x02DB, 0x0142, 0x00B4, 0x013E, 0x015B, 0x02C7,  // B0
    0x00B8, 0x0161, 0x015F, 0x0165, 0x017A, 0x02DD, 0x017E, 0x017C,  // B8
    0x0154, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7,  // C0
    0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD, 0x00CE, 0x010E,  // C8
    0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7,  // D0
    0x0158, 0x016E, 0x00DA, 0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF,  // D8
    0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7,  // E0
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F,  // E8
    0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4, 0x0151, 0x00F6, 0x00F7,  // F0
    0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,  // F8
};
const unsigned int page3[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0126, 0x02D8, 0x00A3, 0x00A4, 0x0000, 0x0124, 0x00A7,  // A0
    0x00A8, 0x0130, 0x015E, 0x011E, 0x0134, 0x00AD, 0x0000, 0x017B,  // A8
    0x00B0, 0x0127, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x0125, 0x00B7,  // B0
    0x00B8, 0x0131, 0x015F, 0x011F, 0x0135, 0x00BD, 0x0000, 0x017C,  // B8
    0x00C0, 0x00C1, 0x00C2, 0x0000, 0x00C4, 0x010A, 0x0108, 0x00C7,  // C0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x0000, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x0120, 0x00D6, 0x00D7,  // D0
    0x011C, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x016C, 0x015C, 0x00DF,  // D8
    0x00E0, 0x00E1, 0x00E2, 0x0000, 0x00E4, 0x010B, 0x0109, 0x00E7,  // E0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x0000, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x0121, 0x00F6, 0x00F7,  // F0
    0x011D, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x016D, 0x015D, 0x02D9,  // F8
};
const unsigned int page4[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0104, 0x0138, 0x0156, 0x00A4, 0x0128, 0x013B, 0x00A7,  // A0
    0x00A8, 0x0160, 0x0112, 0x0122, 0x0166, 0x00AD, 0x017D, 0x00AF,  // A8
    0x00B0, 0x0105, 0x02DB, 0x0157, 0x00B4, 0x0129, 0x013C, 0x02C7,  // B0
    0x00B8, 0x0161, 0x0113, 0x0123, 0x0167, 0x014A, 0x017E, 0x014B,  // B8
    0x0100, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x012E,  // C0
    0x010C, 0x00C9, 0x0118, 0x00CB, 0x0116, 0x00CD, 0x00CE, 0x012A,  // C8
    0x0110, 0x0145, 0x014C, 0x0136, 0x00D4, 0x00D5, 0x00D6, 0x00D7,  // D0
    0x00D8, 0x0172, 0x00DA, 0x00DB, 0x00DC, 0x0168, 0x016A, 0x00DF,  // D8
    0x0101, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x012F,  // E0
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x0117, 0x00ED, 0x00EE, 0x012B,  // E8
    0x0111, 0x0146, 0x014D, 0x0137, 0x00F4, 0x00F5, 0x00F6, 0x00F7,  // F0
    0x00F8, 0x0173, 0x00FA, 0x00FB, 0x00FC, 0x0169, 0x016B, 0x02D9,  // F8
};
const unsigned int page5[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0401, 0x0402, 0x0403, 0x0404, 0x0405, 0x0406, 0x0407,  // A0
    0x0408, 0x0409, 0x040A, 0x040B, 0x040C, 0x00AD, 0x040E, 0x040F,  // A8
    0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417,  // B0
    0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D, 0x041E, 0x041F,  // B8
    0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426, 0x0427,  // C0
    0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F,  // C8
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437,  // D0
    0x0438, 0x0439, 0x043A, 0x043B, 0x043C, 0x043D, 0x043E, 0x043F,  // D8
    0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447,  // E0
    0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F,  // E8
    0x2116, 0x0451, 0x0452, 0x0453, 0x0454, 0x0455, 0x0456, 0x0457,  // F0
    0x0458, 0x0459, 0x045A, 0x045B, 0x045C, 0x00A7, 0x045E, 0x045F,  // F8
};
const unsigned int page6[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0000, 0x0000, 0x0000, 0x00A4, 0x0000, 0x0000, 0x0000,  // A0
    0x0000, 0x0000, 0x0000, 0x0000, 0x060C, 0x00AD, 0x0000, 0x0000,  // A8
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // B0
    0x0000, 0x0000, 0x0000, 0x061B, 0x0000, 0x0000, 0x0000, 0x061F,  // B8
    0x0000, 0x0621, 0x0622, 0x0623, 0x0624, 0x0625, 0x0626, 0x0627,  // C0
    0x0628, 0x0629, 0x062A, 0x062B, 0x062C, 0x062D, 0x062E, 0x062F,  // C8
    0x0630, 0x0631, 0x0632, 0x0633, 0x0634, 0x0635, 0x0636, 0x0637,  // D0
    0x0638, 0x0639, 0x063A, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // D8
    0x0640, 0x0641, 0x0642, 0x0643, 0x0644, 0x0645, 0x0646, 0x0647,  // E0
    0x0648, 0x0649, 0x064A, 0x064B, 0x064C, 0x064D, 0x064E, 0x064F,  // E8
    0x0650, 0x0651, 0x0652, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // F0
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // F8
};
const unsigned int page7[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x2018, 0x2019, 0x00A3, 0x0000, 0x0000, 0x00A6, 0x00A7,  // A0
    0x00A8, 0x00A9, 0x0000, 0x00AB, 0x00AC, 0x00AD, 0x0000, 0x2015,  // A8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x0384, 0x0385, 0x0386, 0x00B7,  // B0
    0x0388, 0x0389, 0x038A, 0x00BB, 0x038C, 0x00BD, 0x038E, 0x038F,  // B8
    0x0390, 0x0391, 0x0392, 0x0393, 0x0394, 0x0395, 0x0396, 0x0397,  // C0
    0x0398, 0x0399, 0x039A, 0x039B, 0x039C, 0x039D, 0x039E, 0x039F,  // C8
    0x03A0, 0x03A1, 0x0000, 0x03A3, 0x03A4, 0x03A5, 0x03A6, 0x03A7,  // D0
    0x03A8, 0x03A9, 0x03AA, 0x03AB, 0x03AC, 0x03AD, 0x03AE, 0x03AF,  // D8
    0x03B0, 0x03B1, 0x03B2, 0x03B3, 0x03B4, 0x03B5, 0x03B6, 0x03B7,  // E0
    0x03B8, 0x03B9, 0x03BA, 0x03BB, 0x03BC, 0x03BD, 0x03BE, 0x03BF,  // E8
    0x03C0, 0x03C1, 0x03C2, 0x03C3, 0x03C4, 0x03C5, 0x03C6, 0x03C7,  // F0
    0x03C8, 0x03C9, 0x03CA, 0x03CB, 0x03CC, 0x03CD, 0x03CE, 0x0000,  // F8
};
const unsigned int page8[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0000, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6, 0x00A7,  // A0
    0x00A8, 0x00A9, 0x00D7, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,  // A8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00B6, 0x00B7,  // B0
    0x00B8, 0x00B9, 0x00F7, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x0000,  // B8
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // C0
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // C8
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,  // D0
    0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x2017,  // D8
    0x05D0, 0x05D1, 0x05D2, 0x05D3, 0x05D4, 0x05D5, 0x05D6, 0x05D7,  // E0
    0x05D8, 0x05D9, 0x05DA, 0x05DB, 0x05DC, 0x05DD, 0x05DE, 0x05DF,  // E8
    0x05E0, 0x05E1, 0x05E2, 0x05E3, 0x05E4, 0x05E5, 0x05E6, 0x05E7,  // F0
    0x05E8, 0x05E9, 0x05EA, 0x0000, 0x0000, 0x200E, 0x200F, 0x0000,  // F8
};
const unsigned int page9[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6, 0x00A7,  // A0
    0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,  // A8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00B6, 0x00B7,  // B0
    0x00B8, 0x00B9, 0x00BA, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x00BF,  // B8
    0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7,  // C0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x011E, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D7,  // D0
    0x00D8, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x0130, 0x015E, 0x00DF,  // D8
    0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,  // E0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x011F, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00F7,  // F0
    0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x0131, 0x015F, 0x00FF,  // F8
};
const unsigned int page10[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0104, 0x0112, 0x0122, 0x012A, 0x0128, 0x0136, 0x00A7,  // A0
    0x013B, 0x0110, 0x0160, 0x0166, 0x017D, 0x00AD, 0x016A, 0x014A,  // A8
    0x00B0, 0x0105, 0x0113, 0x0123, 0x012B, 0x0129, 0x0137, 0x00B7,  // B0
    0x013C, 0x0111, 0x0161, 0x0167, 0x017E, 0x2015, 0x016B, 0x014B,  // B8
    0x0100, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x012E,  // C0
    0x010C, 0x00C9, 0x0118, 0x00CB, 0x0116, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x00D0, 0x0145, 0x014C, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x0168,  // D0
    0x00D8, 0x0172, 0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF,  // D8
    0x0101, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x012F,  // E0
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x0117, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x00F0, 0x0146, 0x014D, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x0169,  // F0
    0x00F8, 0x0173, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x0138,  // F8
};
const unsigned int page11[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0E01, 0x0E02, 0x0E03, 0x0E04, 0x0E05, 0x0E06, 0x0E07,  // A0
    0x0E08, 0x0E09, 0x0E0A, 0x0E0B, 0x0E0C, 0x0E0D, 0x0E0E, 0x0E0F,  // A8
    0x0E10, 0x0E11, 0x0E12, 0x0E13, 0x0E14, 0x0E15, 0x0E16, 0x0E17,  // B0
    0x0E18, 0x0E19, 0x0E1A, 0x0E1B, 0x0E1C, 0x0E1D, 0x0E1E, 0x0E1F,  // B8
    0x0E20, 0x0E21, 0x0E22, 0x0E23, 0x0E24, 0x0E25, 0x0E26, 0x0E27,  // C0
    0x0E28, 0x0E29, 0x0E2A, 0x0E2B, 0x0E2C, 0x0E2D, 0x0E2E, 0x0E2F,  // C8
    0x0E30, 0x0E31, 0x0E32, 0x0E33, 0x0E34, 0x0E35, 0x0E36, 0x0E37,  // D0
    0x0E38, 0x0E39, 0x0E3A, 0x0000, 0x0000, 0x0000, 0x0000, 0x0E3F,  // D8
    0x0E40, 0x0E41, 0x0E42, 0x0E43, 0x0E44, 0x0E45, 0x0E46, 0x0E47,  // E0
    0x0E48, 0x0E49, 0x0E4A, 0x0E4B, 0x0E4C, 0x0E4D, 0x0E4E, 0x0E4F,  // E8
    0x0E50, 0x0E51, 0x0E52, 0x0E53, 0x0E54, 0x0E55, 0x0E56, 0x0E57,  // F0
    0x0E58, 0x0E59, 0x0E5A, 0x0E5B, 0x0000, 0x0000, 0x0000, 0x0000,  // F8
};
const unsigned int page13[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x201D, 0x00A2, 0x00A3, 0x00A4, 0x201E, 0x00A6, 0x00A7,  // A0
    0x00D8, 0x00A9, 0x0156, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00C6,  // A8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x201C, 0x00B5, 0x00B6, 0x00B7,  // B0
    0x00F8, 0x00B9, 0x0157, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x00E6,  // B8
    0x0104, 0x012E, 0x0100, 0x0106, 0x00C4, 0x00C5, 0x0118, 0x0112,  // C0
    0x010C, 0x00C9, 0x0179, 0x0116, 0x0122, 0x0136, 0x012A, 0x013B,  // C8
    0x0160, 0x0143, 0x0145, 0x00D3, 0x014C, 0x00D5, 0x00D6, 0x00D7,  // D0
    0x0172, 0x0141, 0x015A, 0x016A, 0x00DC, 0x017B, 0x017D, 0x00DF,  // D8
    0x0105, 0x012F, 0x0101, 0x0107, 0x00E4, 0x00E5, 0x0119, 0x0113,  // E0
    0x010D, 0x00E9, 0x017A, 0x0117, 0x0123, 0x0137, 0x012B, 0x013C,  // E8
    0x0161, 0x0144, 0x0146, 0x00F3, 0x014D, 0x00F5, 0x00F6, 0x00F7,  // F0
    0x0173, 0x0142, 0x015B, 0x016B, 0x00FC, 0x017C, 0x017E, 0x2019,  // F8
};
const unsigned int page14[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x1E02, 0x1E03, 0x00A3, 0x010A, 0x010B, 0x1E0A, 0x00A7,  // A0
    0x1E80, 0x00A9, 0x1E82, 0x1E0B, 0x1EF2, 0x00AD, 0x00AE, 0x0178,  // A8
    0x1E1E, 0x1E1F, 0x0120, 0x0121, 0x1E40, 0x1E41, 0x00B6, 0x1E56,  // B0
    0x1E81, 0x1E57, 0x1E83, 0x1E60, 0x1EF3, 0x1E84, 0x1E85, 0x1E61,  // B8
    0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7,  // C0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x0174, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x1E6A,  // D0
    0x00D8, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x0176, 0x00DF,  // D8
    0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,  // E0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x0175, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x1E6B,  // F0
    0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x0177, 0x00FF,  // F8
};
const unsigned int page15[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x20AC, 0x00A5, 0x0160, 0x00A7,  // A0
    0x0161, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,  // A8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x017D, 0x00B5, 0x00B6, 0x00B7,  // B0
    0x017E, 0x00B9, 0x00BA, 0x00BB, 0x0152, 0x0153, 0x0178, 0x00BF,  // B8
    0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7,  // C0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D7,  // D0
    0x00D8, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF,  // D8
    0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,  // E0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x00F0, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00F7,  // F0
    0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x00FF,  // F8
};
const unsigned int page16[256] = {
    VELMAR_BELOW_A0,
    0x00A0, 0x0104, 0x0105, 0x0141, 0x20AC, 0x201E, 0x0160, 0x00A7,  // A0
    0x0161, 0x00A9, 0x0218, 0x00AB, 0x0179, 0x00AD, 0x017A, 0x017B,  // A8
    0x00B0, 0x00B1, 0x010C, 0x0142, 0x017D, 0x201D, 0x00B6, 0x00B7,  // B0
    0x017E, 0x010D, 0x0219, 0x00BB, 0x0152, 0x0153, 0x0178, 0x017C,  // B8
    0x00C0, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0106, 0x00C6, 0x00C7,  // C0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // C8
    0x0110, 0x0143, 0x00D2, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x015A,  // D0
    0x0170, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x0118, 0x021A, 0x00DF,  // D8
    0x00E0, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x0107, 0x00E6, 0x00E7,  // E0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // E8
    0x0111, 0x0144, 0x00F2, 0x00F3, 0x00F4, 0x0151, 0x00F6, 0x015B,  // F0
    0x0171, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x0119, 0x021B, 0x00FF,  // F8
};
// clang-format on
#undef VELMAR_BELOW_A0

namespace {

constexpr int kPartCount = 17;
constexpr const unsigned int* kPages[kPartCount] = {
    nullptr, nullptr, page2,  page3,   page4,  page5,  page6,  page7,  page8,
    page9,   page10,  page11, nullptr, page13, page14, page15, page16,
};

/// The code point of a byte of ISO 8859-`part`; 0 when the byte or the part is not there.
unsigned int CodepointOfByte(unsigned char byte, int part) {
  if (part == 1) return byte;
  if (part < 0 || part >= kPartCount || kPages[part] == nullptr) return 0;
  return kPages[part][byte];
}

}  // namespace

std::string ISO8859ToUtf8(const std::string& bytes, int part) {
  std::string utf8;
  utf8.reserve(bytes.size() + bytes.size() / 2);
  for (const char c : bytes) AppendUtf8(CodepointOfByte(static_cast<unsigned char>(c), part), utf8);
  return utf8;
}

// ----------------------------------------------------------------------------------------------------------
// UTF-8

void AppendUtf8(unsigned int codepoint, std::string& out) {
  const auto append = [&out](unsigned int byte) { out += static_cast<char>(byte); };
  const auto continuation = [&append, codepoint](int shift) { append(0x80 | ((codepoint >> shift) & 0x3F)); };
  if (codepoint <= 0x7F) {
    append(codepoint);
  } else if (codepoint <= 0x7FF) {
    append(0xC0 | (codepoint >> 6));
    continuation(0);
  } else if (codepoint <= 0xFFFF) {
    append(0xE0 | (codepoint >> 12));
    continuation(6);
    continuation(0);
  } else if (codepoint <= 0x1FFFFF) {
    append(0xF0 | (codepoint >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

std::string Utf8Encode(unsigned int codepoint) {
  std::string utf8;
  AppendUtf8(codepoint, utf8);
  return utf8;
}

bool NextIsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

namespace {

/// How many continuation bytes follow a lead byte; -1 for a byte that cannot start a sequence.
int ContinuationsAfter(unsigned char lead) {
  if (lead < 0x80) return 0;
  if ((lead & 0xE0) == 0xC0) return 1;
  if ((lead & 0xF0) == 0xE0) return 2;
  if ((lead & 0xF8) == 0xF0) return 3;
  return -1;
}

// The public functions count in 32 bits; whole texts, which may be longer, are converted with std::size_t.

template <class Index>
void FoldContinuation(const std::string& s, Index& index, unsigned int& codepoint) {
  ++index;
  if (index >= s.size()) {
    throw std::string("String ended in middle of utf8 character '" + s +
                      "' - index: " + std::to_string(index));
  }
  const auto byte = static_cast<unsigned char>(s[index]);
  if (!NextIsContinuation(byte)) {
    throw std::string("Expected a utf8 continuation, did not get one '" + s +
                      "' - index: " + std::to_string(index) + " - character: " + s[index]);
  }
  codepoint = (codepoint << 6) | (byte & 0x3F);
}

template <class Index>
unsigned int DecodeUtf8(const std::string& s, Index& index) {
  if (index >= s.size()) return 0;
  const auto lead = static_cast<unsigned char>(s[index]);
  int continuations = ContinuationsAfter(lead);
  if (continuations < 0) return 0;
  if (continuations == 0) return lead;
  unsigned int codepoint = lead & (0x3F >> continuations);
  for (; continuations > 0; --continuations) FoldContinuation(s, index, codepoint);
  return codepoint;
}

}  // namespace

void GetNextContinuation(const std::string& s, unsigned int& index, unsigned int& codepoint) {
  FoldContinuation(s, index, codepoint);
}

unsigned int GetNextUtf8Codepoint(const std::string& s, unsigned int& index) { return DecodeUtf8(s, index); }

bool IsPossibleISO8859(const char* text) {
  if (text == nullptr) return false;
  while (*text != '\0') {
    int continuations = ContinuationsAfter(static_cast<unsigned char>(*text++));
    if (continuations < 0) return true;
    for (; continuations > 0; --continuations) {
      if (!NextIsContinuation(static_cast<unsigned char>(*text))) return true;
      ++text;
    }
  }
  return false;
}

// -------------------------------------------------------------------------------------------------------
// Encoding

namespace {

/// Appends the last `digits` hexadecimal digits of `value`.
void AppendHex(unsigned int value, int digits, std::string& out) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
    out += "0123456789ABCDEF"[(value >> shift) & 0xF];
}

void AppendCodepointAsStepText(unsigned int codepoint, std::string& out) {
  if (codepoint == '\'') {
    out += "''";
  } else if (codepoint == '\\') {
    out += "\\\\";
  } else if (codepoint >= 0x20 && codepoint <= 0x7F) {
    out += static_cast<char>(codepoint);
  } else if (codepoint <= 0xFF) {
    out += "\\X\\";
    AppendHex(codepoint, 2, out);
  } else if (codepoint <= 0xFFFF) {
    out += "\\X2\\";
    AppendHex(codepoint, 4, out);
    out += "\\X0\\";
  } else {
    out += "\\X4\\";
    AppendHex(codepoint, 8, out);
    out += "\\X0\\";
  }
}

}  // namespace

std::string ConvertUnicodeCodepointToSTEPEncoding(unsigned int codepoint) {
  std::string text;
  AppendCodepointAsStepText(codepoint, text);
  return text;
}

void AppendUtf8AsStepText(const std::string& utf8, std::string& out) {
  std::size_t index = 0;
  while (index < utf8.size()) {
    const std::size_t plain = PlainStepPrefix(utf8.data() + index, utf8.size() - index);
    out.append(utf8, index, plain);
    index += plain;
    if (index == utf8.size()) return;
    AppendCodepointAsStepText(DecodeUtf8(utf8, index), out);
    ++index;
  }
}

std::string ConvertUtf8ToSTEPString(const std::string& utf8) {
  if (IsPlainStepText(utf8.data(), utf8.size())) return utf8;
  std::string text;
  text.reserve(2 * utf8.size());
  AppendUtf8AsStepText(utf8, text);
  return text;
}

// -------------------------------------------------------------------------------------------------------
// Decoding

void AddHexDigit(char c, unsigned int& value, bool& ok) {
  unsigned int digit;
  if (c >= '0' && c <= '9') {
    digit = static_cast<unsigned int>(c - '0');
  } else if (c >= 'A' && c <= 'F') {
    digit = static_cast<unsigned int>(c - 'A' + 10);
  } else if (c >= 'a' && c <= 'f') {
    digit = static_cast<unsigned int>(c - 'a' + 10);
  } else {
    ok = false;
    return;
  }
  ok = true;
  value = (value << 4) | digit;
}

namespace {

template <class Index>
bool ReadHex(const std::string& s, Index& index, std::size_t digits, unsigned int& codepoint) {
  const std::size_t begin = index;
  if (begin >= s.size() || s.size() - begin < digits) return false;
  codepoint = 0;
  for (std::size_t i = begin; i < begin + digits; ++i) {
    bool ok;
    AddHexDigit(s[i], codepoint, ok);
    if (!ok) return false;
  }
  index += static_cast<Index>(digits);
  return true;
}

template <class Index>
bool MatchDirective(const std::string& s, Index& index, const char* name, std::size_t length) {
  const std::size_t begin = index;
  if (begin >= s.size() || s.size() - begin < length + 2) return false;
  if (s[begin] != '\\' || s[begin + length + 1] != '\\') return false;
  if (s.compare(begin + 1, length, name, length) != 0) return false;
  index += static_cast<Index>(length + 2);
  return true;
}

/// Decodes the body of a file string, ISO 10303-21 clause 6.4.3.
class StepTextDecoder {
 public:
  explicit StepTextDecoder(const std::string& text) : text_(text) { output_.reserve(text.size()); }

  std::string Decode() {
    while (index_ < text_.size()) {
      switch (text_[index_]) {
        case '\'':
          Apostrophe();
          break;
        case '\\':
          Directive();
          break;
        default:
          Run();
      }
    }
    return std::move(output_);
  }

 private:
  void Run() {
    const std::size_t begin = index_;
    while (index_ < text_.size() && text_[index_] != '\'' && text_[index_] != '\\') ++index_;
    output_.append(text_, begin, index_ - begin);
  }

  // '' stands for one apostrophe; a single one is kept.
  void Apostrophe() { Quoted('\''); }

  void Quoted(char c) {
    output_ += c;
    ++index_;
    if (index_ < text_.size() && text_[index_] == c) ++index_;
  }

  void Directive() {
    if (Get("S")) {
      UpperHalf();
    } else if (GetAlphabet()) {
      // the part is set, nothing is written
    } else if (Get("X")) {
      Byte();
    } else if (Get("X2")) {
      HexRun(4);
    } else if (Get("X4")) {
      HexRun(8);
    } else {
      Quoted('\\');
    }
  }

  // \S\c
  void UpperHalf() {
    if (index_ == text_.size()) return;
    const auto byte = static_cast<unsigned char>(static_cast<unsigned char>(text_[index_++]) | 0x80);
    AppendUtf8(CodepointOfByte(byte, part_), output_);
  }

  // \Px\ for any character x
  bool GetAlphabet() {
    if (text_.size() - index_ < 4 || text_[index_ + 1] != 'P' || text_[index_ + 3] != '\\') return false;
    part_ = static_cast<unsigned char>(text_[index_ + 2]) - ('A' - 1);
    index_ += 4;
    return true;
  }

  // \X\hh; without two digits the character behind the directive is taken as it is
  void Byte() {
    unsigned int codepoint;
    if (!ReadHex(text_, index_, 2, codepoint)) {
      if (index_ == text_.size()) return;
      codepoint = static_cast<unsigned char>(text_[index_++]);
    }
    AppendUtf8(codepoint, output_);
  }

  // \X2\ or \X4\ and any number of groups, ended by \X0\ or by what is no group
  void HexRun(std::size_t digits) {
    unsigned int codepoint;
    while (ReadHex(text_, index_, digits, codepoint)) AppendUtf8(codepoint, output_);
    Get("X0");
  }

  bool Get(const char* name) { return MatchDirective(text_, index_, name, std::strlen(name)); }

  const std::string& text_;
  std::size_t index_ = 0;
  int part_ = 1;
  std::string output_;
};

}  // namespace

bool GetHexTwoCodePoint(const std::string& s, unsigned int& index, unsigned int& codepoint) {
  return ReadHex(s, index, 4, codepoint);
}

bool GetHexFourCodePoint(const std::string& s, unsigned int& index, unsigned int& codepoint) {
  return ReadHex(s, index, 8, codepoint);
}

bool MatchStepEscapeSequence(const std::string& s, unsigned int& index, char c) {
  return MatchDirective(s, index, &c, 1);
}

bool MatchStepEscapeSequence(const std::string& s, unsigned int& index, char c1, char c2) {
  const char name[] = {c1, c2};
  return MatchDirective(s, index, name, 2);
}

std::string ConvertSTEPStringToUtf8(const std::string& stepText) {
  if (IsPlainStepText(stepText.data(), stepText.size())) return stepText;
  if (IsPossibleISO8859(stepText.c_str())) {
    const std::string utf8 = ISO8859ToUtf8(stepText, 1);
    return StepTextDecoder(utf8).Decode();
  }
  return StepTextDecoder(stepText).Decode();
}

// ----------------------------------------------------------------------------------------- MarkUnsetValues

namespace {

// Marks what it visits where it is unset, and remembers the elements of aggregates as still to be visited.
class UnsetValueMarker : public ExpAttributeVisitor {
 public:
  // From the member at `begin` on.
  int Mark(ExpEntity& entity, int begin) {
    const int end = entity.GetNofExplicitMembers();
    for (int index = begin; index < end; ++index) pending_.push_back(entity.GetMember(index));
    while (!pending_.empty()) {
      ExpAttribute* value = pending_.back();
      pending_.pop_back();
      if (value != nullptr) value->Accept(this);
    }
    return marked_;
  }

 private:
  void VisitExpLink(ExpLink* value) override { MarkIf(value->GetExpLink() == ExpLink().GetExpLink(), *value); }
  void VisitExpEnumeration(ExpEnumeration* value) override {
    MarkIf(value->GetExpEnumerationString().empty(), *value);
  }
  void VisitExpSelect(ExpSelect* value) override {
    MarkIf(value->GetExpSelectValue() == nullptr, *value);
    pending_.push_back(value->GetExpSelectValue());
  }
  void VisitExpAggregation(ExpAggregation* value) override {
    pending_.insert(pending_.end(), value->GetExpAggregation()->begin(), value->GetExpAggregation()->end());
  }
  void MarkIf(bool isUnset, ExpAttribute& value) {
    if (!isUnset || value.IsNotProvided() || value.IsOmitted()) return;
    value.SetNotProvided(true);
    ++marked_;
  }

  std::vector<ExpAttribute*> pending_;
  int marked_ = 0;
};

}  // namespace

int MarkUnsetValues(ExpEntity& entity) {
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(&entity);
  if (complex == nullptr) return UnsetValueMarker().Mark(entity, 0);
  int marked = 0;
  for (ExpEntity* part : *complex->GetEntities()) {
    marked += UnsetValueMarker().Mark(*part, part->GetExternalMappingStartIndex());
  }
  return marked;
}

void ReleaseUnusedMemory() { SmallObjectPool::Release(); }

// ------------------------------------------------------------------------------------- ExpFullEntityWriter

// One entity on the way: reached first, and written once everything above it on the stack is done.
struct ExpFullEntityWriter::Step {
  ExpEntity* entity;
  bool writeSelf;
  bool referencesDone;
};

ExpFullEntityWriter::ExpFullEntityWriter(ExpAbstractObjectAdmin* admin, std::ostream& out)
    : admin_(admin), out_(out), writtenNumbers_(new std::vector<int>) {}

ExpFullEntityWriter::~ExpFullEntityWriter() { delete writtenNumbers_; }

void ExpFullEntityWriter::WriteFullEntity(ExpEntity* entity) { WriteEntity(entity, true); }

void ExpFullEntityWriter::WriteEntity(ExpEntity* entity, bool writeSelf) {
  std::vector<Step> steps{{entity, writeSelf, false}};
  Run(steps);
}

void ExpFullEntityWriter::WriteAggregation(ExpAggregation* aggregation) {
  if (aggregation == nullptr) return;
  std::vector<Step> steps;
  CollectReferences(aggregation, steps);
  std::reverse(steps.begin(), steps.end());
  Run(steps);
}

void ExpFullEntityWriter::Run(std::vector<Step>& steps) {
  try {
    Walk(steps);
  } catch (...) {
    inProgress_.clear();
    throw;
  }
}

// The top of the stack is the entity to look at next; what an entity refers to is put above it.
void ExpFullEntityWriter::Walk(std::vector<Step>& steps) {
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    auto* complex = dynamic_cast<ExpExternalMappingEntity*>(step.entity);
    if (step.referencesDone) {
      if (complex != nullptr) inProgress_.erase(complex);
      out_ << step.entity->ToString() << '\n';
      continue;
    }
    if (step.writeSelf) {
      if (complex != nullptr) {
        if (!inProgress_.insert(complex).second) continue;
      } else {
        const int number = step.entity->GetEntityNumber();
        if (!written_.insert(number).second) continue;
        writtenNumbers_->push_back(number);
      }
      steps.push_back({step.entity, true, true});
    }
    const std::size_t first = steps.size();
    if (complex != nullptr) {
      for (ExpEntity* part : *complex->GetEntities()) steps.push_back({part, false, false});
    } else {
      const int members = step.entity->GetNofExplicitMembers();
      KeptRecord* kept = KeptRecord::Find(*step.entity);
      for (int index = 0; index < members; ++index) {
        ExpAttribute* value = step.entity->GetMember(index);
        CollectReferences(kept == nullptr ? value : kept->InPlaceOf(value, index), steps);
      }
      if (kept != nullptr) {
        const auto [first, last] = kept->From(members);
        for (auto value = first; value != last; ++value) CollectReferences(&value->second, steps);
      }
    }
    std::reverse(steps.begin() + static_cast<std::ptrdiff_t>(first), steps.end());
  }
}

// Appends the entities that a value leads to, in the order in which they are written.
void ExpFullEntityWriter::CollectReferences(ExpAttribute* value, std::vector<Step>& steps) {
  using Elements = std::list<ExpAttribute*>;
  std::vector<std::pair<Elements::iterator, Elements::iterator>> levels;
  const bool withSelectedAggregates = CompleteWriting::IsOn();
  for (;;) {
    if (auto* select = dynamic_cast<ExpSelect*>(value); select != nullptr && withSelectedAggregates) {
      value = select->GetExpSelectValue();
    }
    if (auto* aggregation = dynamic_cast<ExpAggregation*>(value)) {
      Elements* elements = aggregation->GetExpAggregation();
      levels.emplace_back(elements->begin(), elements->end());
    } else {
      ExpEntity* referenced = nullptr;
      if (dynamic_cast<ExpLink*>(value) != nullptr) {
        referenced = admin_->GetEntity(value);
      } else if (auto* select = dynamic_cast<ExpSelect*>(value); select != nullptr && select->IsExpLink()) {
        referenced = admin_->GetEntity(select->GetExpLink());
      }
      if (referenced != nullptr) steps.push_back({referenced, true, false});
    }
    while (!levels.empty() && levels.back().first == levels.back().second) levels.pop_back();
    if (levels.empty()) return;
    value = *levels.back().first++;
  }
}

}  // namespace VELMAR
