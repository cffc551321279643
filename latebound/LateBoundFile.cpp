#include "LateBoundFile.h"

namespace VELMAR {

LateBoundFile::LateBoundFile(const LateBoundSchema& schema)
    : ExpFixedSchemaFile(schema.GetRegistryName(), schema.GetName()) {}
LateBoundFile::~LateBoundFile() = default;

}  // namespace VELMAR
