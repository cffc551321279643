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

void Visitor::VisitClass(Class* entity) {
  VisitExpEntity(entity);
}

CppNames_::~CppNames_() = default;

void Visitor::VisitCppNames_(CppNames_* entity) {
  VisitExpEntity(entity);
}

ExpEntity_::~ExpEntity_() = default;

void Visitor::VisitExpEntity_(ExpEntity_* entity) {
  VisitExpEntity(entity);
}

Late::~Late() = default;

ExpAttribute* Late::GetMember(int index) {
  switch (index) {
    case 3: return &other_;
    default: return Load_::GetMember(index);
  }
}

void Visitor::VisitLate(Late* entity) {
  VisitLoad_(entity);
}

LoAd::~LoAd() = default;

void Visitor::VisitLoAd(LoAd* entity) {
  VisitExpEntity(entity);
}

Load_::~Load_() = default;

ExpAttribute* Load_::GetMember(int index) {
  switch (index) {
    case 0: return &a_1_;
    case 1: return &a1_;
    case 2: return &colour_;
    default: return nullptr;
  }
}

void Visitor::VisitLoad_(Load_* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"CLASS", &ExpSchemaCreate<Class>, 9, 0, 0, 1,
     "",
     "",
     "int this operator class to_string tostring_ get_member exp_string namespace",
     &typeid(Class),
     &ExpSchemaVisit<&Visitor::VisitClass>},
    {"CPP_NAMES", &ExpSchemaCreate<CppNames_>, 0, 0, 0, 2,
     "",
     "",
     "",
     &typeid(CppNames_),
     &ExpSchemaVisit<&Visitor::VisitCppNames_>},
    {"EXP_ENTITY", &ExpSchemaCreate<ExpEntity_>, 0, 0, 0, 3,
     "",
     "",
     "",
     &typeid(ExpEntity_),
     &ExpSchemaVisit<&Visitor::VisitExpEntity_>},
    {"LATE", &ExpSchemaCreate<Late>, 4, 0, 3, 4,
     "LOAD",
     "",
     "a_1 a1 colour other",
     &typeid(Late),
     &ExpSchemaVisit<&Visitor::VisitLate>},
    {"LO_AD", &ExpSchemaCreate<LoAd>, 0, 0, 0, 5,
     "",
     "",
     "",
     &typeid(LoAd),
     &ExpSchemaVisit<&Visitor::VisitLoAd>},
    {"LOAD", &ExpSchemaCreate<Load_>, 3, 0, 0, 6,
     "",
     "LATE",
     "a_1 a1 colour",
     &typeid(Load_),
     &ExpSchemaVisit<&Visitor::VisitLoad_>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 6};

}  // namespace VELMAR::CppNames
