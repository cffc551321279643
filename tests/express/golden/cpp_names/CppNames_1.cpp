// Generated from cpp_names.exp by velmar-express 3.1. Do not edit.
#include "CppNames.h"

namespace VELMAR::CppNames {

Class::~Class() = default;

ExpAttribute* Class::GetMember(int index) {
  switch (index) {
    case 0: return &int_;
    case 1: return &this_;
    case 2: return &operator_;
    case 3: return &class_;
    case 4: return &to_string_;
    case 5: return &tostring__;
    case 6: return &get_member_;
    case 7: return &exp_string_;
    case 8: return &namespace_;
    default: return nullptr;
  }
}

CppNames_::~CppNames_() = default;

ExpEntity_::~ExpEntity_() = default;

Late::~Late() = default;

ExpAttribute* Late::GetMember(int index) {
  switch (index) {
    case 3: return &other_;
    default: return Load_::GetMember(index);
  }
}

LoAd::~LoAd() = default;

Load_::~Load_() = default;

ExpAttribute* Load_::GetMember(int index) {
  switch (index) {
    case 0: return &a_1_;
    case 1: return &a1_;
    case 2: return &colour_;
    default: return nullptr;
  }
}

namespace {

constexpr ExpEntityTypeRow kEntityTypes[] = {
    {"CLASS", &ExpSchemaCreate<Class>, 9, 0, 0, 1,
     "",
     "",
     "int this operator class to_string tostring_ get_member exp_string namespace"},
    {"CPP_NAMES", &ExpSchemaCreate<CppNames_>, 0, 0, 0, 2,
     "",
     "",
     ""},
    {"EXP_ENTITY", &ExpSchemaCreate<ExpEntity_>, 0, 0, 0, 3,
     "",
     "",
     ""},
    {"LATE", &ExpSchemaCreate<Late>, 4, 0, 3, 4,
     "LOAD",
     "",
     "a_1 a1 colour other"},
    {"LO_AD", &ExpSchemaCreate<LoAd>, 0, 0, 0, 5,
     "",
     "",
     ""},
    {"LOAD", &ExpSchemaCreate<Load_>, 3, 0, 0, 6,
     "",
     "LATE",
     "a_1 a1 colour"},
};

}  // namespace

void Register1(const char* schema) { RegisterEntityTypes(schema, kEntityTypes, 6); }

}  // namespace VELMAR::CppNames
