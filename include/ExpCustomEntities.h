/// @file ExpCustomEntities.h
/// The entities of the HEADER section (ISO 10303-21, header section) and the factory that registers them.
#pragma once

#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// The base of the header entities; visitors pass over all of them.
class VELMAR_API FILE_INFORMATION : virtual public ExpEntity {
 public:
  /// A new entity of the type; the creation function of its type.
  static ExpEntity* New();
  ~FILE_INFORMATION() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  void Accept(ExpEntityVisitor* visitor) override;
  /// Empties every attribute.
  virtual void ClearContent();
};

/// FILE_DESCRIPTION: what the file holds and the implementation level of its encoding.
class VELMAR_API FILE_DESCRIPTION : virtual public FILE_INFORMATION {
 public:
  /// As FILE_INFORMATION::New.
  static ExpEntity* New();
  FILE_DESCRIPTION();
  ~FILE_DESCRIPTION() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  void Accept(ExpEntityVisitor* visitor) override;
  void ClearContent() override;

  /// The attribute (ISO 10303-21, file_description); belongs to the entity.
  ///@{
  ExpAggregation& Description() { return description_; }
  ExpString& ImplementationLevel() { return implementationLevel_; }
  ///@}

 private:
  ExpAggregation description_;
  ExpString implementationLevel_;
  ExpAttribute* const members_[2];
};

/// FILE_NAME: who wrote the file, when, and with which programs.
class VELMAR_API FILE_NAME : virtual public FILE_INFORMATION {
 public:
  /// As FILE_INFORMATION::New.
  static ExpEntity* New();
  FILE_NAME();
  ~FILE_NAME() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  void Accept(ExpEntityVisitor* visitor) override;
  void ClearContent() override;

  /// The attribute (ISO 10303-21, file_name); belongs to the entity.
  ///@{
  ExpString& Name() { return name_; }
  ExpString& TimeStamp() { return timeStamp_; }
  ExpAggregation& Author() { return author_; }
  ExpAggregation& Organization() { return organization_; }
  ExpString& PreprocessorVersion() { return preprocessorVersion_; }
  ExpString& OriginatingSystem() { return originatingSystem_; }
  ExpString& Authorization() { return authorization_; }
  ///@}

 private:
  ExpString name_;
  ExpString timeStamp_;
  ExpAggregation author_;
  ExpAggregation organization_;
  ExpString preprocessorVersion_;
  ExpString originatingSystem_;
  ExpString authorization_;
  ExpAttribute* const members_[7];
};

/// FILE_SCHEMA: the schemas of the file's instances.
class VELMAR_API FILE_SCHEMA : virtual public FILE_INFORMATION {
 public:
  /// As FILE_INFORMATION::New.
  static ExpEntity* New();
  FILE_SCHEMA();
  ~FILE_SCHEMA() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  void Accept(ExpEntityVisitor* visitor) override;
  void ClearContent() override;

  /// The names of the schemas, each an ExpString (ISO 10303-21, file_schema); belongs to the entity.
  ExpAggregation& SchemaIdentifiers() { return schemaIdentifiers_; }

 private:
  ExpAggregation schemaIdentifiers_;
  ExpAttribute* const members_[1];
};

/// Registers the header entities and the complex instance under the schema name "VELMAR"; the library does so when it
/// is loaded.
class VELMAR_API ExpCustomEntitiesFactory : public ExpObjectFactory {
 public:
  /// What GetInstance has made; for the library.
  ///@{
  static ExpCustomEntitiesFactory* instance;
  static bool isInstanceCreated;
  ///@}
  /// The one instance, made and initialised on the first call; never deleted.
  static ExpCustomEntitiesFactory* GetInstance();

  ~ExpCustomEntitiesFactory() override;
  void Init() override;
};

}  // namespace VELMAR
