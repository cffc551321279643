#include "ExpressParser.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

#include "Lexer.h"

namespace VELMAR::Express {
namespace {

constexpr int kDeepest = 200;

// Thrown after a syntax error has been reported; caught where parsing can go on.
struct SyntaxError {};

// A syntax error that leaves open where the blocks around it end: the whole algorithm is passed over.
struct BlockError : SyntaxError {};

// The words that open a block and the word that closes it.
struct Block {
  TokenKind begin;
  TokenKind end;
};
constexpr Block kBlocks[] = {
    {TokenKind::Alias, TokenKind::EndAlias},
    {TokenKind::Begin, TokenKind::End},
    {TokenKind::Case, TokenKind::EndCase},
    {TokenKind::Constant, TokenKind::EndConstant},
    {TokenKind::Entity, TokenKind::EndEntity},
    {TokenKind::Function, TokenKind::EndFunction},
    {TokenKind::If, TokenKind::EndIf},
    {TokenKind::Local, TokenKind::EndLocal},
    {TokenKind::Procedure, TokenKind::EndProcedure},
    {TokenKind::Repeat, TokenKind::EndRepeat},
    {TokenKind::Rule, TokenKind::EndRule},
    {TokenKind::Schema, TokenKind::EndSchema},
    {TokenKind::SubtypeConstraint, TokenKind::EndSubtypeConstraint},
    {TokenKind::Type, TokenKind::EndType},
};

TokenKind EndOf(TokenKind begin) {
  for (const Block& block : kBlocks) {
    if (block.begin == begin) return block.end;
  }
  return TokenKind::EndOfFile;
}

bool OpensBlock(TokenKind kind) { return EndOf(kind) != TokenKind::EndOfFile; }

bool ClosesBlock(TokenKind kind) {
  return std::any_of(std::begin(kBlocks), std::end(kBlocks),
                     [&](const Block& block) { return block.end == kind; });
}

bool IsReserved(TokenKind kind) { return kind == TokenKind::Builtin || kind >= TokenKind::Abstract; }

bool StartsDeclaration(TokenKind kind) {
  switch (kind) {
    case TokenKind::Constant:
    case TokenKind::Entity:
    case TokenKind::Function:
    case TokenKind::Procedure:
    case TokenKind::Rule:
    case TokenKind::SubtypeConstraint:
    case TokenKind::Type:
    case TokenKind::Use:
    case TokenKind::Reference:
      return true;
    default:
      return false;
  }
}

class Parser {
 public:
  Parser(Model& model, Model::File& file, Diagnostics& diagnostics)
      : model_(model), file_(file), diagnostics_(diagnostics), tokens_(Tokenize(*file.source, diagnostics)) {
    // A remark that is never closed hides the end of the text: what is missing there has no message of its
    // own.
    for (const Diagnostic& diagnostic : diagnostics.All()) {
      if (diagnostic.where.file == file.source.get() && diagnostic.code == Code::UnterminatedRemark) {
        isEndHidden_ = true;
      }
    }
  }

  // syntax = schema_decl { schema_decl } .
  void Syntax() {
    bool found = false;
    while (Kind() != TokenKind::EndOfFile) {
      try {
        if (Kind() != TokenKind::Schema) Fail("SCHEMA");
        found = true;
        SchemaDecl();
      } catch (const SyntaxError&) {
        while (Kind() != TokenKind::EndOfFile && Kind() != TokenKind::Schema) ++at_;
        found = true;
      }
    }
    if (!found && !isEndHidden_) diagnostics_.Report(Code::NoSchema, Here(), "the file holds no schema");
  }

 private:
  // ---- looking, consuming -----------------------------------------------------------------------

  TokenKind Kind(std::size_t ahead = 0) const {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)].kind;
  }

  Location PlaceOf(const Token& token) const { return {file_.source.get(), token.offset, token.length}; }
  Location Here() const { return PlaceOf(tokens_[at_]); }

  std::string_view TextOf(const Token& token) const { return file_.source->Text(token.offset, token.length); }

  // Consumes the token if it is of the kind.
  bool Get(TokenKind kind) {
    if (Kind() != kind) return false;
    ++at_;
    return true;
  }

  // Consumes a token of the kind or reports what stands there instead.
  void Expect(TokenKind kind) {
    if (!Get(kind)) Fail(DescribeKind(kind));
  }

  std::string Found() const {
    const Token& token = tokens_[at_];
    if (token.kind == TokenKind::EndOfFile) return DescribeKind(token.kind);
    const std::string_view text = TextOf(token);
    return text.size() > 40 ? DescribeKind(token.kind) : "'" + std::string(text) + "'";
  }

  // Reports what was expected. What is missing before a line end is reported there, not at the next line.
  [[noreturn]] void Fail(const std::string& expected) {
    if (IsHidden()) throw SyntaxError();
    Location where = HereOrAtEnd();
    std::string text = "expected " + expected + ", found " + Found();
    if (expected == "';'" && at_ > 0) {
      const Token& before = tokens_[at_ - 1];
      const std::uint32_t end = before.offset + before.length;
      const SourceFile& source = *file_.source;
      if (source.PositionOf(end).line != source.PositionOf(tokens_[at_].offset).line) {
        where = {&source, end, 1};
        text = "expected ';' after '" + std::string(TextOf(before)) + "'";
      }
    }
    diagnostics_.Report(Code::Expected, where, text);
    throw SyntaxError();
  }

  bool IsHidden() const { return isEndHidden_ && Kind() == TokenKind::EndOfFile; }

  // The end of the file is shown behind the last token rather than behind whatever blank lines follow.
  Location HereOrAtEnd() const {
    if (Kind() != TokenKind::EndOfFile || at_ == 0) return Here();
    const Token& last = tokens_[at_ - 1];
    return {file_.source.get(), last.offset + last.length, 1};
  }

  // Reports a block that the text leaves open.
  [[noreturn]] void FailNotClosed(const Location& begin, const std::string& what, TokenKind end) {
    if (IsHidden()) throw SyntaxError();
    diagnostics_.Report(Code::NotClosed, HereOrAtEnd(),
                        "expected " + DescribeKind(end) + ", found " + Found(), begin, what + " begins here");
    throw SyntaxError();
  }

  // Consumes a name. A reserved word in the place of a name is reported, and taken for the name it was meant
  // to be.
  Name ExpectName(const char* what) {
    if (Kind() != TokenKind::Identifier) {
      if (!IsReserved(Kind())) Fail(what);
      diagnostics_.Report(Code::ReservedWord, Here(),
                          Found() + " is a reserved word of EXPRESS and no name: expected " + what);
      if (!MayFollowName(Kind(1))) throw SyntaxError();
    }
    return TakeName();
  }

  static bool MayFollowName(TokenKind kind) {
    switch (kind) {
      case TokenKind::Abstract:
      case TokenKind::Colon:
      case TokenKind::Comma:
      case TokenKind::Dot:
      case TokenKind::Equal:
      case TokenKind::For:
      case TokenKind::RightParenthesis:
      case TokenKind::Semicolon:
      case TokenKind::Subtype:
      case TokenKind::Supertype:
        return true;
      default:
        return false;
    }
  }

  Name TakeName() {
    Name name{LowerCase(TextOf(tokens_[at_])), Here()};
    ++at_;
    return name;
  }

  // ---- recovery ---------------------------------------------------------------------------------

  // To the next declaration, or the end of the schema.
  void SkipToDeclaration() {
    while (Kind() != TokenKind::EndOfFile && Kind() != TokenKind::EndSchema && Kind() != TokenKind::Schema) {
      if (StartsDeclaration(Kind())) return;
      const bool isEnd = EndsDeclaration(Kind()) && Kind(1) == TokenKind::Semicolon;
      at_ += isEnd ? 2 : 1;
      if (isEnd) return;
    }
  }

  static bool EndsDeclaration(TokenKind kind) {
    switch (kind) {
      case TokenKind::EndConstant:
      case TokenKind::EndEntity:
      case TokenKind::EndFunction:
      case TokenKind::EndProcedure:
      case TokenKind::EndRule:
      case TokenKind::EndSubtypeConstraint:
      case TokenKind::EndType:
        return true;
      default:
        return false;
    }
  }

  // Within an entity: behind the next ';', or to a word that begins a section or ends the entity.
  void SkipToNextAttribute() {
    while (Kind() != TokenKind::EndOfFile && !EndsAttributes(Kind()) && Kind() != TokenKind::Entity) {
      if (Get(TokenKind::Semicolon)) return;
      ++at_;
    }
  }

  static bool EndsAttributes(TokenKind kind) {
    switch (kind) {
      case TokenKind::Derive:
      case TokenKind::Inverse:
      case TokenKind::Where:
      case TokenKind::EndEntity:
      case TokenKind::EndType:
      case TokenKind::EndSchema:
      case TokenKind::Type:
      case TokenKind::Entity:
      case TokenKind::Function:
      case TokenKind::Procedure:
      case TokenKind::Rule:
      case TokenKind::EndOfFile:
        return true;
      default:
        return false;
    }
  }

  // ---- schema -----------------------------------------------------------------------------------

  // schema_decl = SCHEMA schema_id [ schema_version_id ] ';' schema_body END_SCHEMA ';' .
  void SchemaDecl() {
    const Location begin = Here();
    Expect(TokenKind::Schema);
    model_.schemas.push_back(std::make_unique<SchemaDeclaration>());
    schema_ = model_.schemas.back().get();
    declarations_ = &schema_->declarations;
    declared_ = nullptr;
    schema_->name = SchemaName();
    if (Kind() == TokenKind::StringLiteral || Kind() == TokenKind::EncodedStringLiteral) {
      schema_->isVersionEncoded = Kind() == TokenKind::EncodedStringLiteral;
      const ExpressionPtr version = schema_->isVersionEncoded ? EncodedString() : SimpleString();
      schema_->version = static_cast<const StringLiteral&>(*version).value;
    }
    try {
      Expect(TokenKind::Semicolon);
    } catch (const SyntaxError&) {
      SkipToDeclaration();
    }
    SchemaBody();
    if (Kind() != TokenKind::EndSchema) {
      FailNotClosed(begin, "schema '" + schema_->name.text + "'", TokenKind::EndSchema);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  Name SchemaName() {
    const bool isAlone = Kind(1) == TokenKind::Semicolon || Kind(1) == TokenKind::StringLiteral ||
                         Kind(1) == TokenKind::EncodedStringLiteral;
    if (!IsReserved(Kind()) || !isAlone) return ExpectName("the schema's name");
    diagnostics_.Report(Code::ReservedSchemaName, Here(),
                        "the schema's name " + Found() + " is a reserved word");
    return TakeName();
  }

  // schema_body = { interface_specification } [ constant_decl ] { declaration | rule_decl } .
  void SchemaBody() {
    while (Kind() != TokenKind::EndSchema && Kind() != TokenKind::EndOfFile && Kind() != TokenKind::Schema) {
      const std::size_t start = at_;
      try {
        nesting_ = blockDepth_ = algorithmDepth_ = 0;
        declarations_ = &schema_->declarations;
        Declaration();
      } catch (const SyntaxError&) {
        if (!schema_->declarations.empty()) schema_->declarations.back()->damaged = true;
        if (at_ == start) ++at_;
        SkipToDeclaration();
      }
    }
  }

  // declaration = entity_decl | function_decl | procedure_decl | subtype_constraint_decl | type_decl .
  void Declaration() {
    switch (Kind()) {
      case TokenKind::Use:
      case TokenKind::Reference:
        return InterfaceSpecification();
      case TokenKind::Constant:
        return ConstantDecl();
      case TokenKind::Type:
        return TypeDecl();
      case TokenKind::Entity:
        return EntityDecl();
      case TokenKind::SubtypeConstraint:
        return SubtypeConstraintDecl();
      case TokenKind::Function:
        return AlgorithmDecl(DeclarationKind::Function);
      case TokenKind::Procedure:
        return AlgorithmDecl(DeclarationKind::Procedure);
      case TokenKind::Rule:
        return AlgorithmDecl(DeclarationKind::Rule);
      default:
        Fail("a declaration or END_SCHEMA");
    }
  }

  // use_clause = USE FROM schema_ref [ '(' named_type_or_rename { ',' named_type_or_rename } ')' ] ';' .
  // reference_clause = REFERENCE FROM schema_ref [ '(' resource_or_rename { ',' resource_or_rename } ')' ]
  // ';' .
  void InterfaceSpecification() {
    Interface interface;
    interface.isUse = Kind() == TokenKind::Use;
    ++at_;
    Expect(TokenKind::From);
    interface.schemaName = ExpectName("the name of a schema");
    if (Get(TokenKind::LeftParenthesis)) {
      do {
        InterfaceItem item;
        item.name = ExpectName("the name of a declaration");
        item.alias = Get(TokenKind::As) ? ExpectName("the new name") : item.name;
        interface.items.push_back(std::move(item));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    }
    schema_->interfaces.push_back(std::move(interface));
    Expect(TokenKind::Semicolon);
  }

  // constant_decl = CONSTANT constant_body { constant_body } END_CONSTANT ';' .
  // constant_body = constant_id ':' instantiable_type ':=' expression ';' .
  void ConstantDecl() {
    const Location begin = Here();
    StartOfSection(TokenKind::Constant);
    while (Kind() == TokenKind::Identifier || IsReserved(Kind())) {
      if (Kind() == TokenKind::EndConstant || StartsDeclaration(Kind()) || Kind() == TokenKind::EndSchema)
        break;
      auto constant = std::make_unique<Constant>(ExpectName("a constant's name"), schema_);
      Expect(TokenKind::Colon);
      constant->type = ParameterType();
      Expect(TokenKind::Assign);
      constant->expression = Expr();
      Expect(TokenKind::Semicolon);
      declarations_->push_back(std::move(constant));
    }
    if (Kind() != TokenKind::EndConstant) FailNotClosed(begin, "CONSTANT", TokenKind::EndConstant);
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // ---- types ------------------------------------------------------------------------------------

  // type_decl = TYPE type_id '=' underlying_type ';' [ where_clause ] END_TYPE ';' .
  void TypeDecl() {
    const Location begin = Here();
    ++at_;
    auto type = std::make_unique<DefinedType>(ExpectName("the type's name"), schema_);
    DefinedType& declared = *type;
    Expect(TokenKind::Equal);
    declared.underlying = UnderlyingType();
    declarations_->push_back(std::move(type));
    Expect(TokenKind::Semicolon);
    if (StartOfSection(TokenKind::Where)) declared.where = Rules();
    if (Kind() != TokenKind::EndType)
      FailNotClosed(begin, "type '" + declared.name.text + "'", TokenKind::EndType);
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // underlying_type = concrete_types | constructed_types .
  TypeExpression UnderlyingType() {
    switch (Kind()) {
      case TokenKind::Enumeration:
      case TokenKind::Select:
      case TokenKind::Extensible:
        return ConstructedType();
      default:
        return ParameterType();
    }
  }

  // enumeration_type = [ EXTENSIBLE ] ENUMERATION [ ( OF enumeration_items ) | enumeration_extension ] .
  // select_type = [ EXTENSIBLE [ GENERIC_ENTITY ] ] SELECT [ select_list | select_extension ] .
  TypeExpression ConstructedType() {
    TypeExpression type;
    type.where = Here();
    type.extensible = Get(TokenKind::Extensible);
    type.genericEntity = Get(TokenKind::GenericEntity);
    if (!type.genericEntity && Get(TokenKind::Enumeration)) {
      type.kind = TypeKind::Enumeration;
      if (Get(TokenKind::Of)) {
        type.items = Items("an enumeration item");
      } else if (!Extension(type, "an enumeration item") && !type.extensible) {
        Fail("OF");
      }
      return type;
    }
    if (!Get(TokenKind::Select)) Fail(type.genericEntity ? "SELECT" : "ENUMERATION or SELECT");
    type.kind = TypeKind::Select;
    if (Kind() == TokenKind::LeftParenthesis) {
      type.items = Items("the name of a type or entity");
    } else if (!Extension(type, "the name of a type or entity") && !type.extensible &&
               Kind() != TokenKind::Semicolon) {
      Fail("'('");
    }
    return type;
  }

  // extension = BASED_ON type_ref [ WITH list ] .
  bool Extension(TypeExpression& type, const char* itemName) {
    if (!Get(TokenKind::BasedOn)) return false;
    type.basedOn = ExpectName("the name of an extensible type");
    if (Get(TokenKind::With)) type.items = Items(itemName);
    return true;
  }

  // '(' name { ',' name } ')' .
  std::vector<TypeItem> Items(const char* itemName) {
    std::vector<TypeItem> items;
    Expect(TokenKind::LeftParenthesis);
    do {
      items.push_back({ExpectName(itemName), nullptr});
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::RightParenthesis);
    return items;
  }

  // parameter_type = generalized_types | named_types | simple_types .
  TypeExpression ParameterType() {
    TypeExpression type;
    TypeExpression* at = &type;
    for (int depth = 0; AggregateType(*at); ++depth) {
      if (depth == kDeepest) {
        diagnostics_.Report(Code::TooDeep, Here(), "aggregates are nested deeper than 200 levels");
        throw SyntaxError();
      }
      at->element = std::make_shared<TypeExpression>();
      at = at->element.get();
    }
    SimpleType(*at);
    return type;
  }

  // aggregation_types = array_type | bag_type | list_type | set_type ; with general and conformant forms of
  // each.
  bool AggregateType(TypeExpression& type) {
    type.where = Here();
    switch (Kind()) {
      case TokenKind::Array:
        type.kind = TypeKind::Array;
        break;
      case TokenKind::Bag:
        type.kind = TypeKind::Bag;
        break;
      case TokenKind::List:
        type.kind = TypeKind::List;
        break;
      case TokenKind::Set:
        type.kind = TypeKind::Set;
        break;
      case TokenKind::Aggregate:
        type.kind = TypeKind::Aggregate;
        break;
      default:
        return false;
    }
    ++at_;
    if (type.kind == TypeKind::Aggregate) {
      TypeLabel(type);
    } else if (Kind() == TokenKind::LeftBracket) {
      type.hasBounds = true;
      BoundSpec(type.lower, type.upper);
    }
    Expect(TokenKind::Of);
    type.optionalElements = type.kind == TypeKind::Array && Get(TokenKind::Optional);
    type.uniqueElements =
        (type.kind == TypeKind::Array || type.kind == TypeKind::List) && Get(TokenKind::Unique);
    return true;
  }

  // [ ':' type_label ]
  void TypeLabel(TypeExpression& type) {
    if (Get(TokenKind::Colon)) type.label = ExpectName("a type label");
  }

  // bound_spec = '[' bound_1 ':' bound_2 ']' .
  void BoundSpec(ExpressionPtr& lower, ExpressionPtr& upper) {
    const Location open = Here();
    Expect(TokenKind::LeftBracket);
    lower = SimpleExprNested();
    Expect(TokenKind::Colon);
    if (Kind() == TokenKind::RightBracket) Fail("an upper bound ('?' where there is none)");
    upper = SimpleExprNested();
    Close(TokenKind::RightBracket, open);
  }

  // simple_types, named_types, generic_type, generic_entity_type.
  void SimpleType(TypeExpression& type) {
    type.where = Here();
    switch (Kind()) {
      case TokenKind::Integer:
        type.kind = TypeKind::Integer;
        break;
      case TokenKind::Number:
        type.kind = TypeKind::Number;
        break;
      case TokenKind::Boolean:
        type.kind = TypeKind::Boolean;
        break;
      case TokenKind::Logical:
        type.kind = TypeKind::Logical;
        break;
      case TokenKind::Real:
        type.kind = TypeKind::Real;
        break;
      case TokenKind::String:
        type.kind = TypeKind::String;
        break;
      case TokenKind::Binary:
        type.kind = TypeKind::Binary;
        break;
      case TokenKind::Generic:
        type.kind = TypeKind::Generic;
        break;
      case TokenKind::GenericEntity:
        type.kind = TypeKind::GenericEntity;
        break;
      case TokenKind::Enumeration:
      case TokenKind::Select:
      case TokenKind::Extensible:
        Fail("the name of a type (an enumeration or select is declared as a TYPE of its own)");
      default:
        if (IsReserved(Kind()) || Kind() != TokenKind::Identifier) Fail("a type");
        type.kind = TypeKind::Named;
        type.name = ExpectName("a type");
        return;
    }
    ++at_;
    if (type.kind == TypeKind::Generic || type.kind == TypeKind::GenericEntity) TypeLabel(type);
    const bool hasWidth =
        type.kind == TypeKind::Real || type.kind == TypeKind::String || type.kind == TypeKind::Binary;
    if (hasWidth && Get(TokenKind::LeftParenthesis)) {
      type.width = SimpleExprNested();
      Expect(TokenKind::RightParenthesis);
      type.fixed = type.kind != TypeKind::Real && Get(TokenKind::Fixed);
    }
  }

  // ---- entity -----------------------------------------------------------------------------------

  // entity_decl = entity_head entity_body END_ENTITY ';' .
  void EntityDecl() {
    const Location begin = Here();
    ++at_;
    auto owned = std::make_unique<Entity>(ExpectName("the entity's name"), schema_);
    entity_ = owned.get();
    declarations_->push_back(std::move(owned));
    EntityHead();
    EntityBody();
    if (Kind() != TokenKind::EndEntity) {
      FailNotClosed(begin, "entity '" + entity_->name.text + "'", TokenKind::EndEntity);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // entity_head = ENTITY entity_id subsuper ';' .
  void EntityHead() {
    try {
      Subsuper();
      Expect(TokenKind::Semicolon);
    } catch (const SyntaxError&) {
      // A missing ';' before an attribute costs nothing more; anything else is passed over.
      const bool beforeAttribute =
          Kind() == TokenKind::Identifier && (Kind(1) == TokenKind::Colon || Kind(1) == TokenKind::Comma);
      if (!beforeAttribute) SkipToNextAttribute();
    }
  }

  // subsuper = [ supertype_constraint ] [ subtype_declaration ] .
  // supertype_constraint = abstract_entity_declaration | abstract_supertype_declaration | supertype_rule .
  void Subsuper() {
    entity_->isAbstract = Get(TokenKind::Abstract);
    if (Get(TokenKind::Supertype)) {
      entity_->isAbstractSupertype = entity_->isAbstract;
      if (Get(TokenKind::Of)) {
        entity_->supertypeExpression = std::make_unique<SupertypeExpression>(ParenthesisedSupertypes());
      } else if (!entity_->isAbstract) {
        Fail("OF");
      }
    }
    // subtype_declaration = SUBTYPE OF '(' entity_ref { ',' entity_ref } ')' .
    if (Get(TokenKind::Subtype)) {
      Expect(TokenKind::Of);
      Expect(TokenKind::LeftParenthesis);
      do {
        entity_->supertypeNames.push_back(ExpectName("the name of a supertype"));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    }
  }

  SupertypeExpression ParenthesisedSupertypes() {
    Expect(TokenKind::LeftParenthesis);
    SupertypeExpression expression = SupertypeExpr(0);
    Expect(TokenKind::RightParenthesis);
    return expression;
  }

  // supertype_expression = supertype_factor { ANDOR supertype_factor } .
  SupertypeExpression SupertypeExpr(int depth) {
    return Combined(SupertypeExpression::Kind::AndOr, TokenKind::Andor,
                    [&] { return SupertypeFactor(depth); });
  }

  // supertype_factor = supertype_term { AND supertype_term } .
  SupertypeExpression SupertypeFactor(int depth) {
    return Combined(SupertypeExpression::Kind::And, TokenKind::And, [&] { return SupertypeTerm(depth); });
  }

  template <class Operand>
  SupertypeExpression Combined(SupertypeExpression::Kind kind, TokenKind separator, Operand operand) {
    SupertypeExpression first = operand();
    if (Kind() != separator) return first;
    SupertypeExpression all;
    all.kind = kind;
    all.operands.push_back(std::move(first));
    while (Get(separator)) all.operands.push_back(operand());
    return all;
  }

  // supertype_term = entity_ref | one_of | '(' supertype_expression ')' .
  SupertypeExpression SupertypeTerm(int depth) {
    if (depth == kDeepest) {
      diagnostics_.Report(Code::TooDeep, Here(), "supertype expressions are nested deeper than 200 levels");
      throw SyntaxError();
    }
    SupertypeExpression term;
    if (Get(TokenKind::Oneof)) {
      term.kind = SupertypeExpression::Kind::OneOf;
      Expect(TokenKind::LeftParenthesis);
      do {
        term.operands.push_back(SupertypeExpr(depth + 1));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    } else if (Get(TokenKind::LeftParenthesis)) {
      term = SupertypeExpr(depth + 1);
      Expect(TokenKind::RightParenthesis);
    } else {
      term.name = ExpectName("the name of a subtype");
    }
    return term;
  }

  // entity_body = { explicit_attr } [ derive_clause ] [ inverse_clause ] [ unique_clause ] [ where_clause ] .
  void EntityBody() {
    while (StartOfAttribute()) Recovering([&] { ExplicitAttr(); });
    if (StartOfSection(TokenKind::Derive)) {
      while (StartOfAttribute()) Recovering([&] { DerivedAttr(); });
    }
    if (StartOfSection(TokenKind::Inverse)) {
      while (StartOfAttribute()) Recovering([&] { InverseAttr(); });
    }
    if (StartOfSection(TokenKind::Unique)) {
      while (StartOfAttribute()) Recovering([&] { UniqueRules(); });
    }
    if (StartOfSection(TokenKind::Where)) entity_->where = Rules();
  }

  // Consumes the word that opens a section, if it stands here, and warns where the section holds nothing.
  bool StartOfSection(TokenKind word) {
    if (!Get(word)) return false;
    const bool isEmpty = Kind() == TokenKind::Derive || Kind() == TokenKind::Inverse ||
                         Kind() == TokenKind::Unique || Kind() == TokenKind::Where || ClosesBlock(Kind());
    if (isEmpty) {
      const Token& opened = tokens_[at_ - 1];
      diagnostics_.Report(Code::EmptySection, PlaceOf(opened),
                          "nothing stands between " + DescribeKind(word) + " and " + DescribeKind(Kind()));
    }
    return true;
  }

  // A word of the language where an attribute is expected: let ExpectName say that it is no name.
  bool StartOfAttribute() const {
    if (Kind() == TokenKind::Identifier || Kind() == TokenKind::Self) return true;
    return IsReserved(Kind()) && (Kind(1) == TokenKind::Colon || Kind(1) == TokenKind::Comma);
  }

  template <class Parse>
  void Recovering(Parse parse) {
    const std::size_t start = at_;
    try {
      parse();
    } catch (const SyntaxError&) {
      entity_->damaged = true;
      nesting_ = 0;
      if (at_ == start && !EndsAttributes(Kind())) ++at_;
      SkipToNextAttribute();
    }
  }

  // explicit_attr = attribute_decl { ',' attribute_decl } ':' [ OPTIONAL ] parameter_type ';' .
  void ExplicitAttr() {
    const std::size_t first = entity_->attributes.size();
    do {
      entity_->attributes.push_back(AttributeDecl(AttributeKind::Explicit));
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::Colon);
    const bool optional = Get(TokenKind::Optional);
    const auto type = std::make_shared<TypeExpression>(ParameterType());
    for (std::size_t i = first; i < entity_->attributes.size(); ++i) {
      entity_->attributes[i].optional = optional;
      entity_->attributes[i].type = type;
    }
    Expect(TokenKind::Semicolon);
  }

  // derived_attr = attribute_decl ':' parameter_type ':=' expression ';' .
  void DerivedAttr() {
    entity_->attributes.push_back(AttributeDecl(AttributeKind::Derived));
    Attribute& attribute = entity_->attributes.back();
    Expect(TokenKind::Colon);
    attribute.type = std::make_shared<TypeExpression>(ParameterType());
    if (Kind() == TokenKind::Semicolon) {
      diagnostics_.Report(Code::NoExpression, Here(),
                          "derived attribute '" + attribute.name.text + "' has no expression: expected ':='");
      throw SyntaxError();
    }
    Expect(TokenKind::Assign);
    attribute.expression = Expr();
    Expect(TokenKind::Semicolon);
  }

  // inverse_attr = attribute_decl ':' [ ( SET | BAG ) [ bound_spec ] OF ] entity_ref FOR [ entity_ref '.' ]
  //                attribute_ref ';' .
  void InverseAttr() {
    entity_->attributes.push_back(AttributeDecl(AttributeKind::Inverse));
    Attribute& attribute = entity_->attributes.back();
    Expect(TokenKind::Colon);
    if (Kind() == TokenKind::Set || Kind() == TokenKind::Bag) {
      attribute.inverseKind = Kind() == TokenKind::Set ? TypeKind::Set : TypeKind::Bag;
      ++at_;
      if (Kind() == TokenKind::LeftBracket) {
        attribute.inverseHasBounds = true;
        BoundSpec(attribute.inverseLower, attribute.inverseUpper);
      }
      Expect(TokenKind::Of);
    }
    attribute.inverseEntity = ExpectName("the name of an entity");
    Expect(TokenKind::For);
    attribute.inverseAttribute = ExpectName("the name of an attribute");
    if (Get(TokenKind::Dot)) {
      attribute.inverseGroup = std::move(attribute.inverseAttribute);
      attribute.inverseAttribute = ExpectName("the name of an attribute");
    }
    Expect(TokenKind::Semicolon);
  }

  // attribute_decl = attribute_id | redeclared_attribute .
  // redeclared_attribute = SELF '\' entity_ref '.' attribute_ref [ RENAMED attribute_id ] .
  Attribute AttributeDecl(AttributeKind kind) {
    Attribute attribute;
    attribute.kind = kind;
    attribute.owner = entity_;
    if (!Get(TokenKind::Self)) {
      attribute.name = ExpectName("the name of an attribute");
      return attribute;
    }
    attribute.redeclared = true;
    Expect(TokenKind::Backslash);
    attribute.redeclaredEntity = ExpectName("the name of a supertype");
    Expect(TokenKind::Dot);
    attribute.redeclaredAttribute = ExpectName("the name of an attribute");
    attribute.renamed = Get(TokenKind::Renamed);
    attribute.name = attribute.renamed ? ExpectName("the new name") : attribute.redeclaredAttribute;
    return attribute;
  }

  // unique_rule = [ rule_label_id ':' ] referenced_attribute { ',' referenced_attribute } ';' .
  void UniqueRules() {
    UniqueRule rule;
    if (Kind(1) == TokenKind::Colon) {
      rule.label = ExpectName("a label");
      ++at_;
    }
    do {
      UniqueAttribute attribute;
      if (Get(TokenKind::Self)) {
        Expect(TokenKind::Backslash);
        attribute.group = ExpectName("the name of a supertype");
        Expect(TokenKind::Dot);
      }
      attribute.name = ExpectName("the name of an attribute");
      rule.attributes.push_back(std::move(attribute));
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::Semicolon);
    entity_->unique.push_back(std::move(rule));
  }

  // where_clause = WHERE domain_rule ';' { domain_rule ';' } .
  // domain_rule = [ rule_label_id ':' ] expression .
  std::vector<LabelledRule> Rules() {
    std::vector<LabelledRule> rules;
    while (!ClosesBlock(Kind()) && !StartsDeclaration(Kind()) && Kind() != TokenKind::EndOfFile) {
      LabelledRule rule;
      if (Kind() == TokenKind::Identifier && Kind(1) == TokenKind::Colon) {
        rule.label = ExpectName("a label");
        ++at_;
      }
      rule.expression = Expr();
      Expect(TokenKind::Semicolon);
      rules.push_back(std::move(rule));
    }
    return rules;
  }

  // ---- constraints ------------------------------------------------------------------------------

  // subtype_constraint_decl = SUBTYPE_CONSTRAINT subtype_constraint_id FOR entity_ref ';'
  // subtype_constraint_body
  //                           END_SUBTYPE_CONSTRAINT ';' .
  // subtype_constraint_body = [ ABSTRACT SUPERTYPE ';' ] [ TOTAL_OVER '(' entity_ref { ',' entity_ref } ')'
  // ';' ]
  //                           [ supertype_expression ';' ] .
  void SubtypeConstraintDecl() {
    const Location begin = Here();
    ++at_;
    auto owned = std::make_unique<SubtypeConstraint>(ExpectName("the constraint's name"), schema_);
    SubtypeConstraint& constraint = *owned;
    declarations_->push_back(std::move(owned));
    Expect(TokenKind::For);
    constraint.entityName = ExpectName("the name of an entity");
    Expect(TokenKind::Semicolon);
    if (Get(TokenKind::Abstract)) {
      constraint.isAbstract = true;
      Expect(TokenKind::Supertype);
      Expect(TokenKind::Semicolon);
    }
    if (Get(TokenKind::TotalOver)) {
      Expect(TokenKind::LeftParenthesis);
      do {
        SupertypeExpression entity;
        entity.name = ExpectName("the name of a subtype");
        constraint.totalOver.push_back(std::move(entity));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
      Expect(TokenKind::Semicolon);
    }
    const bool hasExpression =
        Kind() == TokenKind::Identifier || Kind() == TokenKind::Oneof || Kind() == TokenKind::LeftParenthesis;
    if (hasExpression) {
      constraint.expression = std::make_unique<SupertypeExpression>(SupertypeExpr(0));
      Expect(TokenKind::Semicolon);
    }
    if (Kind() != TokenKind::EndSubtypeConstraint) {
      FailNotClosed(begin, "subtype constraint '" + constraint.name.text + "'",
                    TokenKind::EndSubtypeConstraint);
    }
    ++at_;
    Expect(TokenKind::Semicolon);
  }

  // ---- expressions ------------------------------------------------------------------------------

  [[noreturn]] void FailTooDeep(const char* what) {
    diagnostics_.Report(Code::TooDeep, Here(), what);
    throw BlockError();
  }

  // Takes the operand into account for the depth of the node; gives the operand back to be kept.
  ExpressionPtr Under(Expression& node, ExpressionPtr operand) {
    const int depth = operand->depth + 1;
    if (depth > kDeepestExpression) FailTooDeepExpression();
    node.depth = std::max(node.depth, static_cast<std::uint16_t>(depth));
    return operand;
  }

  [[noreturn]] void FailTooDeepExpression() {
    FailTooDeep("the expression is nested deeper than 500 levels");
  }

  // expression = simple_expression [ rel_op_extended simple_expression ] .
  ExpressionPtr Expr() {
    if (++nesting_ > kDeepest) {
      nesting_ = 0;
      FailTooDeep("brackets are nested deeper than 200 levels");
    }
    ExpressionPtr left = SimpleExpr();
    const std::optional<Operator> op = BinaryOperator(1);
    if (op) left = Combined(std::move(left), *op, [&] { return SimpleExpr(); });
    --nesting_;
    return left;
  }

  // simple_expression = term { add_like_op term } .
  ExpressionPtr SimpleExpr() {
    return Chain(2, [&] { return Chain(3, [&] { return Factor(); }); });
  }

  // factor = simple_factor [ '**' simple_factor ] .
  ExpressionPtr Factor() {
    ExpressionPtr left = SimpleFactor();
    if (BinaryOperator(4)) left = Combined(std::move(left), Operator::Power, [&] { return SimpleFactor(); });
    return left;
  }

  template <class Parse>
  ExpressionPtr Chain(int precedence, Parse operand) {
    ExpressionPtr left = operand();
    while (const std::optional<Operator> op = BinaryOperator(precedence)) {
      left = Combined(std::move(left), *op, operand);
    }
    return left;
  }

  template <class Parse>
  ExpressionPtr Combined(ExpressionPtr left, Operator op, Parse right) {
    auto operation = std::make_unique<Operation>(Here(), op);
    ++at_;
    operation->left = Under(*operation, std::move(left));
    operation->right = Under(*operation, right());
    return operation;
  }

  // The operator with two operands at the current token, if it has that precedence.
  std::optional<Operator> BinaryOperator(int precedence) const {
    std::optional<Operator> op;
    switch (Kind()) {
      case TokenKind::Less:
        op = Operator::Less;
        break;
      case TokenKind::Greater:
        op = Operator::Greater;
        break;
      case TokenKind::LessEqual:
        op = Operator::LessEqual;
        break;
      case TokenKind::GreaterEqual:
        op = Operator::GreaterEqual;
        break;
      case TokenKind::NotEqual:
        op = Operator::NotEqual;
        break;
      case TokenKind::Equal:
        op = Operator::Equal;
        break;
      case TokenKind::InstanceNotEqual:
        op = Operator::InstanceNotEqual;
        break;
      case TokenKind::InstanceEqual:
        op = Operator::InstanceEqual;
        break;
      case TokenKind::In:
        op = Operator::In;
        break;
      case TokenKind::Like:
        op = Operator::Like;
        break;
      case TokenKind::Plus:
        op = Operator::Add;
        break;
      case TokenKind::Minus:
        op = Operator::Subtract;
        break;
      case TokenKind::Or:
        op = Operator::Or;
        break;
      case TokenKind::Xor:
        op = Operator::Xor;
        break;
      case TokenKind::Times:
        op = Operator::Multiply;
        break;
      case TokenKind::Slash:
        op = Operator::Divide;
        break;
      case TokenKind::Div:
        op = Operator::IntegerDivide;
        break;
      case TokenKind::Mod:
        op = Operator::Modulo;
        break;
      case TokenKind::And:
        op = Operator::And;
        break;
      case TokenKind::BarBar:
        op = Operator::Combine;
        break;
      case TokenKind::Power:
        op = Operator::Power;
        break;
      default:
        return std::nullopt;
    }
    return OperatorRowOf(*op).precedence == precedence ? op : std::nullopt;
  }

  // simple_factor = aggregate_initializer | entity_constructor | enumeration_reference | interval
  //               | query_expression | ( [ unary_op ] ( '(' expression ')' | primary ) ) .
  ExpressionPtr SimpleFactor() {
    const std::optional<Operator> op = UnaryOperator();
    if (!op) return UnsignedFactor();
    auto unary = std::make_unique<Unary>(Here(), *op);
    ++at_;
    if (UnaryOperator()) Fail("an operand (a second sign or NOT needs parentheses)");
    unary->operand = Under(*unary, UnsignedFactor());
    return unary;
  }

  std::optional<Operator> UnaryOperator() const {
    switch (Kind()) {
      case TokenKind::Plus:
        return Operator::Plus;
      case TokenKind::Minus:
        return Operator::Minus;
      case TokenKind::Not:
        return Operator::Not;
      default:
        return std::nullopt;
    }
  }

  ExpressionPtr UnsignedFactor() {
    const Location where = Here();
    switch (Kind()) {
      case TokenKind::LeftParenthesis: {
        ++at_;
        ExpressionPtr inner = Expr();
        Close(TokenKind::RightParenthesis, where);
        return inner;
      }
      case TokenKind::LeftBracket:
        return AggregateInitializer();
      case TokenKind::LeftBrace:
        return Interval();
      case TokenKind::Query:
        return Query();
      default:
        return Qualified(Primary());
    }
  }

  // primary = literal | qualifiable_factor { qualifier } .
  ExpressionPtr Primary() {
    const Location where = Here();
    switch (Kind()) {
      case TokenKind::IntegerLiteral:
        return Integer();
      case TokenKind::RealLiteral:
        return Real();
      case TokenKind::StringLiteral:
        return SimpleString();
      case TokenKind::EncodedStringLiteral:
        return EncodedString();
      case TokenKind::BinaryLiteral:
        return std::make_unique<BinaryLiteral>(where, std::string(TextOf(tokens_[at_++]).substr(1)));
      case TokenKind::Question:
        ++at_;
        return std::make_unique<IndeterminateLiteral>(where);
      case TokenKind::Self:
        ++at_;
        return std::make_unique<SelfReference>(where);
      case TokenKind::Builtin:
        return BuiltinPrimary();
      case TokenKind::Identifier:
        break;
      default:
        Fail("an expression");
    }
    if (Kind(1) != TokenKind::LeftParenthesis) return std::make_unique<NameReference>(TakeName());
    auto call = std::make_unique<Call>(TakeName());
    call->arguments = Arguments(*call);
    return call;
  }

  ExpressionPtr BuiltinPrimary() {
    const Location where = Here();
    const Builtin builtin = BuiltinAt(at_);
    switch (builtin) {
      case Builtin::False:
        ++at_;
        return std::make_unique<LogicalLiteral>(where, LogicalValue::False);
      case Builtin::True:
        ++at_;
        return std::make_unique<LogicalLiteral>(where, LogicalValue::True);
      case Builtin::Unknown:
        ++at_;
        return std::make_unique<LogicalLiteral>(where, LogicalValue::Unknown);
      default:
        break;
    }
    const BuiltinRow& row = BuiltinRowOf(builtin);
    if (row.kind == BuiltinRow::Procedure) Fail("an expression");
    ++at_;
    if (row.kind == BuiltinRow::Constant) return std::make_unique<BuiltinConstant>(where, builtin);
    auto call = std::make_unique<BuiltinCall>(where, builtin);
    if (Kind() != TokenKind::LeftParenthesis) Fail("'('");
    call->arguments = Arguments(*call);
    CheckArguments(row, call->arguments.size(), where);
    return call;
  }

  void CheckArguments(const BuiltinRow& row, std::size_t given, const Location& where) {
    if (given == static_cast<std::size_t>(row.arguments)) return;
    diagnostics_.Report(Code::WrongArguments, where,
                        std::string(row.name) + " takes " + std::to_string(row.arguments) +
                            (row.arguments == 1 ? " argument, not " : " arguments, not ") +
                            std::to_string(given));
  }

  Builtin BuiltinAt(std::size_t token) const {
    std::string name = LowerCase(TextOf(tokens_[token]));
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return FindBuiltin(name);
  }

  // '(' [ expression { ',' expression } ] ')' .
  std::vector<ExpressionPtr> Arguments(Expression& node) {
    std::vector<ExpressionPtr> arguments = Arguments();
    for (ExpressionPtr& argument : arguments) argument = Under(node, std::move(argument));
    return arguments;
  }

  std::vector<ExpressionPtr> Arguments() {
    std::vector<ExpressionPtr> arguments;
    const Location open = Here();
    Expect(TokenKind::LeftParenthesis);
    if (Kind() != TokenKind::RightParenthesis) {
      do {
        arguments.push_back(Expr());
      } while (Get(TokenKind::Comma));
    }
    Close(TokenKind::RightParenthesis, open);
    return arguments;
  }

  // The bracket that closes the one at `open`.
  void Close(TokenKind bracket, const Location& open) {
    if (Get(bracket)) return;
    if (IsHidden()) throw SyntaxError();
    diagnostics_.Report(Code::Expected, HereOrAtEnd(),
                        "expected " + DescribeKind(bracket) + ", found " + Found(), open,
                        "the bracket opened here");
    throw SyntaxError();
  }

  // qualifier = attribute_qualifier | group_qualifier | index_qualifier .
  ExpressionPtr Qualified(ExpressionPtr operand) {
    for (;;) {
      if (Get(TokenKind::Dot)) {
        auto member = std::make_unique<Member>(ExpectName("the name of an attribute"));
        member->operand = Under(*member, std::move(operand));
        operand = std::move(member);
      } else if (Get(TokenKind::Backslash)) {
        auto group = std::make_unique<Group>(ExpectName("the name of an entity"));
        group->operand = Under(*group, std::move(operand));
        operand = std::move(group);
      } else if (Kind() == TokenKind::LeftBracket) {
        auto index = std::make_unique<VELMAR::Express::Index>(Here());
        ++at_;
        index->operand = Under(*index, std::move(operand));
        index->first = Under(*index, SimpleExprNested());
        if (Get(TokenKind::Colon)) index->last = Under(*index, SimpleExprNested());
        Close(TokenKind::RightBracket, index->where);
        operand = std::move(index);
      } else {
        return operand;
      }
    }
  }

  // A numeric expression within brackets; counts as a level.
  ExpressionPtr SimpleExprNested() {
    if (++nesting_ > kDeepest) {
      nesting_ = 0;
      FailTooDeep("brackets are nested deeper than 200 levels");
    }
    ExpressionPtr expression = SimpleExpr();
    --nesting_;
    return expression;
  }

  // aggregate_initializer = '[' [ element { ',' element } ] ']' .
  // element = expression [ ':' repetition ] .
  ExpressionPtr AggregateInitializer() {
    auto aggregate = std::make_unique<VELMAR::Express::AggregateInitializer>(Here());
    ++at_;
    if (Kind() != TokenKind::RightBracket) {
      do {
        VELMAR::Express::AggregateInitializer::Element element;
        element.value = Under(*aggregate, Expr());
        if (Get(TokenKind::Colon)) element.repetition = Under(*aggregate, SimpleExprNested());
        aggregate->elements.push_back(std::move(element));
      } while (Get(TokenKind::Comma));
    }
    Close(TokenKind::RightBracket, aggregate->where);
    return aggregate;
  }

  // interval = '{' interval_low interval_op interval_item interval_op interval_high '}' .
  ExpressionPtr Interval() {
    auto interval = std::make_unique<VELMAR::Express::Interval>(Here());
    ++at_;
    interval->low = Under(*interval, SimpleExprNested());
    interval->lowOperator = IntervalOperator();
    interval->item = Under(*interval, SimpleExprNested());
    interval->highOperator = IntervalOperator();
    interval->high = Under(*interval, SimpleExprNested());
    Close(TokenKind::RightBrace, interval->where);
    return interval;
  }

  Operator IntervalOperator() {
    if (Get(TokenKind::Less)) return Operator::Less;
    if (Get(TokenKind::LessEqual)) return Operator::LessEqual;
    Fail("'<' or '<='");
  }

  // query_expression = QUERY '(' variable_id '<*' aggregate_source '|' logical_expression ')' .
  ExpressionPtr Query() {
    auto query = std::make_unique<VELMAR::Express::Query>(Here());
    ++at_;
    const Location open = Here();
    Expect(TokenKind::LeftParenthesis);
    query->variable = NewVariable(VariableRole::Query);
    Expect(TokenKind::LessStar);
    query->source = Under(*query, SimpleExprNested());
    Expect(TokenKind::Bar);
    query->condition = Under(*query, Expr());
    Close(TokenKind::RightParenthesis, open);
    return query;
  }

  std::unique_ptr<Variable> NewVariable(VariableRole role) {
    return std::make_unique<Variable>(ExpectName("the name of a variable"), schema_, role);
  }

  ExpressionPtr Integer() {
    const std::string_view text = TextOf(tokens_[at_]);
    std::int64_t value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc()) {
      diagnostics_.Report(Code::NumberRange, Here(), "integers are read up to 9223372036854775807");
    }
    return std::make_unique<IntegerLiteral>(PlaceOf(tokens_[at_++]), value);
  }

  ExpressionPtr Real() {
    const std::string_view text = TextOf(tokens_[at_]);
    double value = 0.0;
    // What is too small to tell from zero is zero.
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    const std::size_t exponent = text.find_first_of("eE");
    const bool isTiny = exponent != std::string_view::npos && text.substr(exponent + 1, 1) == "-";
    if (result.ec == std::errc::result_out_of_range && !isTiny) {
      diagnostics_.Report(Code::NumberRange, Here(), "this real number is too large");
    }
    return std::make_unique<RealLiteral>(PlaceOf(tokens_[at_++]), value);
  }

  ExpressionPtr SimpleString() {
    const Token& token = tokens_[at_++];
    const std::string_view text = TextOf(token);
    std::string value;
    for (std::size_t i = 1; i < text.size(); ++i) {
      if (text[i] != '\'') {
        value += text[i];
      } else if (i + 1 < text.size()) {
        value += text[++i];
      }
    }
    return std::make_unique<StringLiteral>(PlaceOf(token), std::move(value), false);
  }

  ExpressionPtr EncodedString() {
    const Token& token = tokens_[at_++];
    const std::string_view text = TextOf(token);
    std::string value;
    for (std::size_t i = 1; i + 8 < text.size(); i += 8) {
      std::uint32_t character = 0;
      std::from_chars(text.data() + i, text.data() + i + 8, character, 16);
      if (character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) {
        diagnostics_.Report(Code::BadEncodedString,
                            {file_.source.get(), token.offset + static_cast<std::uint32_t>(i), 8},
                            "'" + std::string(text.substr(i, 8)) + "' is the number of no character");
        break;
      }
      AppendUtf8(value, character);
    }
    return std::make_unique<StringLiteral>(PlaceOf(token), std::move(value), true);
  }

  static void AppendUtf8(std::string& text, std::uint32_t character) {
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
      text += static_cast<char>(character);
    } else if (character < 0x800) {
      text += static_cast<char>(0xC0 | character >> 6);
      tail(0);
    } else if (character < 0x10000) {
      text += static_cast<char>(0xE0 | character >> 12);
      tail(6);
      tail(0);
    } else {
      text += static_cast<char>(0xF0 | character >> 18);
      tail(12);
      tail(6);
      tail(0);
    }
  }

  // ---- algorithms -------------------------------------------------------------------------------

  // function_decl = FUNCTION function_id [ parameters ] ':' parameter_type ';' algorithm_head stmt { stmt }
  //                 END_FUNCTION ';' ; likewise PROCEDURE.
  // rule_decl = RULE rule_id FOR '(' entity_ref { ',' entity_ref } ')' ';' algorithm_head { stmt }
  //             where_clause END_RULE ';' .
  void AlgorithmDecl(DeclarationKind kind) {
    const std::size_t start = at_;
    const TokenKind end = EndOf(Kind());
    ++at_;
    auto owned = std::make_unique<Algorithm>(kind, ExpectName("a name"), schema_);
    Algorithm& algorithm = *owned;
    declarations_->push_back(std::move(owned));
    if (++algorithmDepth_ > kDeepest) {
      algorithmDepth_ = 0;
      FailTooDeep("algorithms are nested deeper than 200 levels");
    }
    Entity* const entity = entity_;
    auto* const outer = declarations_;
    Express::Declaration* const declared = declared_;
    declarations_ = &algorithm.declarations;
    declared_ = &algorithm;
    bool isBroken = false;
    try {
      AlgorithmHead(algorithm);
      AlgorithmBody(algorithm);
      CloseBlock(start);
    } catch (const SyntaxError&) {
      isBroken = true;
    }
    declarations_ = outer;
    declared_ = declared;
    entity_ = entity;
    --algorithmDepth_;
    if (isBroken) {
      algorithm.damaged = true;
      blockDepth_ = 0;
      nesting_ = 0;
      LeaveAlgorithm(end);
      ++at_;
    }
    Expect(TokenKind::Semicolon);
  }

  void AlgorithmHead(Algorithm& algorithm) {
    if (algorithm.kind == DeclarationKind::Rule) {
      Expect(TokenKind::For);
      Expect(TokenKind::LeftParenthesis);
      do {
        algorithm.populations.push_back(ExpectName("the name of an entity"));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::RightParenthesis);
    } else if (Get(TokenKind::LeftParenthesis)) {
      do {
        FormalParameter(algorithm);
      } while (Get(TokenKind::Semicolon));
      Expect(TokenKind::RightParenthesis);
    }
    if (algorithm.kind == DeclarationKind::Function) {
      Expect(TokenKind::Colon);
      algorithm.returnType = ParameterType();
    }
    Expect(TokenKind::Semicolon);
  }

  // formal_parameter = parameter_id { ',' parameter_id } ':' parameter_type ; that of a procedure with VAR or
  // without.
  void FormalParameter(Algorithm& algorithm) {
    if (Kind() == TokenKind::Var && algorithm.kind == DeclarationKind::Function) {
      Fail("a parameter (only those of a procedure are VAR)");
    }
    const bool isVar = Get(TokenKind::Var);
    const std::size_t first = algorithm.parameters.size();
    do {
      algorithm.parameters.push_back(NewVariable(VariableRole::Parameter));
    } while (Get(TokenKind::Comma));
    Expect(TokenKind::Colon);
    const auto type = std::make_shared<TypeExpression>(ParameterType());
    for (std::size_t i = first; i < algorithm.parameters.size(); ++i) {
      algorithm.parameters[i]->isVar = isVar;
      algorithm.parameters[i]->type = type;
    }
  }

  // algorithm_head = { declaration } [ constant_decl ] [ local_decl ] .
  void AlgorithmBody(Algorithm& algorithm) {
    while (StartsLocalDeclaration(Kind())) Declaration();
    if (Kind() == TokenKind::Local) LocalDecl(algorithm);
    algorithm.statements = Statements();
    if (algorithm.kind != DeclarationKind::Rule) return;
    if (StartOfSection(TokenKind::Where)) {
      algorithm.where = Rules();
    } else if (Kind() == TokenKind::EndRule) {
      Fail("WHERE (a rule says what must hold)");
    }
  }

  static bool StartsLocalDeclaration(TokenKind kind) {
    switch (kind) {
      case TokenKind::Constant:
      case TokenKind::Entity:
      case TokenKind::Function:
      case TokenKind::Procedure:
      case TokenKind::SubtypeConstraint:
      case TokenKind::Type:
        return true;
      default:
        return false;
    }
  }

  // local_decl = LOCAL local_variable { local_variable } END_LOCAL ';' .
  // local_variable = variable_id { ',' variable_id } ':' parameter_type [ ':=' expression ] ';' .
  void LocalDecl(Algorithm& algorithm) {
    const std::size_t start = at_;
    StartOfSection(TokenKind::Local);
    while (Kind() == TokenKind::Identifier || (IsReserved(Kind()) && Kind(1) == TokenKind::Colon)) {
      const std::size_t first = algorithm.locals.size();
      do {
        algorithm.locals.push_back(NewVariable(VariableRole::Local));
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::Colon);
      const auto type = std::make_shared<TypeExpression>(ParameterType());
      std::shared_ptr<Expression> initial;
      if (Get(TokenKind::Assign)) initial = Expr();
      for (std::size_t i = first; i < algorithm.locals.size(); ++i) {
        algorithm.locals[i]->type = type;
        algorithm.locals[i]->initial = initial;
      }
      Expect(TokenKind::Semicolon);
    }
    CloseBlock(start);
    Expect(TokenKind::Semicolon);
  }

  // The word that ends the block which begins with the token at `start`.
  void CloseBlock(std::size_t start) {
    const Token& block = tokens_[start];
    const TokenKind end = EndOf(block.kind);
    if (Get(end)) return;
    const TokenKind found = Kind();
    if (found == TokenKind::EndOfFile || found == TokenKind::Schema || found == TokenKind::EndSchema ||
        StartsDeclaration(found)) {
      try {
        FailNotClosed(PlaceOf(block), DescribeKind(block.kind), end);
      } catch (const SyntaxError&) {
        throw BlockError();
      }
    }
    if (ClosesBlock(found)) {
      diagnostics_.Report(Code::WrongEnd, Here(), "expected " + DescribeKind(end) + ", found " + Found(),
                          PlaceOf(block), DescribeKind(block.kind) + " opened here");
      throw BlockError();
    }
    Fail(DescribeKind(end));
  }

  // To the word that ends the algorithm; without one, to the next declaration.
  void LeaveAlgorithm(TokenKind end) {
    while (Kind() != end) {
      if (Kind() == TokenKind::EndOfFile || Kind() == TokenKind::EndSchema || Kind() == TokenKind::Schema) {
        throw SyntaxError();
      }
      ++at_;
    }
  }

  // ---- statements -------------------------------------------------------------------------------

  // Statements up to a word that ends them. A statement in error is passed over as a whole.
  std::vector<StatementPtr> Statements() {
    std::vector<StatementPtr> statements;
    while (!EndsStatements(Kind())) {
      const std::size_t start = at_;
      try {
        statements.push_back(Stmt());
      } catch (const BlockError&) {
        throw;
      } catch (const SyntaxError&) {
        declared_->damaged = true;
        nesting_ = 0;
        at_ = std::max(at_, BehindStatement(start));
      }
    }
    return statements;
  }

  static bool EndsStatements(TokenKind kind) {
    return ClosesBlock(kind) || StartsDeclaration(kind) || kind == TokenKind::Else ||
           kind == TokenKind::Otherwise || kind == TokenKind::Where || kind == TokenKind::Schema ||
           kind == TokenKind::EndOfFile;
  }

  // The token behind the statement that starts at `start`: behind its ';', or behind the end of its block.
  std::size_t BehindStatement(std::size_t start) const {
    std::size_t open = 0;
    for (std::size_t i = start; i < tokens_.size(); ++i) {
      const TokenKind kind = tokens_[i].kind;
      if (kind == TokenKind::EndOfFile || kind == TokenKind::EndSchema || StartsDeclaration(kind)) return i;
      if (ClosesBlock(kind)) {
        if (open == 0) return i;
        --open;
      } else if (OpensBlock(kind)) {
        ++open;
      } else if (kind == TokenKind::Semicolon && open == 0) {
        return i + 1;
      }
    }
    return tokens_.size() - 1;
  }

  // stmt = alias_stmt | assignment_stmt | case_stmt | compound_stmt | escape_stmt | if_stmt | null_stmt
  //      | procedure_call_stmt | repeat_stmt | return_stmt | skip_stmt .
  StatementPtr Stmt() {
    if (++blockDepth_ > kDeepest) FailTooDeep("statements are nested deeper than 200 levels");
    const int depth = blockDepth_;
    StatementPtr statement = [&] {
      try {
        return AnyStmt();
      } catch (const SyntaxError&) {
        blockDepth_ = depth - 1;
        throw;
      }
    }();
    --blockDepth_;
    return statement;
  }

  StatementPtr AnyStmt() {
    switch (Kind()) {
      case TokenKind::Alias:
        return AliasStmt();
      case TokenKind::Begin: {
        const std::size_t start = at_;
        auto compound = std::make_unique<CompoundStatement>(Here());
        ++at_;
        compound->body = Statements();
        return Closed(start, std::move(compound));
      }
      case TokenKind::Case:
        return CaseStmt();
      case TokenKind::If:
        return IfStmt();
      case TokenKind::Repeat:
        return RepeatStmt();
      case TokenKind::Return: {
        auto result = std::make_unique<ReturnStatement>(Here());
        ++at_;
        const Location open = Here();
        if (Get(TokenKind::LeftParenthesis)) {
          result->value = Expr();
          Close(TokenKind::RightParenthesis, open);
        }
        return Ended(std::move(result));
      }
      case TokenKind::Escape:
        return Bare(StatementKind::Escape, 1);
      case TokenKind::Skip:
        return Bare(StatementKind::Skip, 1);
      case TokenKind::Semicolon:
        return Bare(StatementKind::Null, 0);
      case TokenKind::Builtin:
        return ProcedureCall();
      case TokenKind::Identifier:
        if (Kind(1) == TokenKind::LeftParenthesis || Kind(1) == TokenKind::Semicolon) return ProcedureCall();
        return AssignmentStmt();
      default:
        Fail("a statement");
    }
  }

  StatementPtr Ended(StatementPtr statement) {
    Expect(TokenKind::Semicolon);
    return statement;
  }

  StatementPtr Closed(std::size_t start, StatementPtr statement) {
    CloseBlock(start);
    return Ended(std::move(statement));
  }

  StatementPtr Bare(StatementKind kind, std::size_t words) {
    auto statement = std::make_unique<Statement>(kind, Here());
    at_ += words;
    return Ended(std::move(statement));
  }

  // assignment_stmt = general_ref { qualifier } ':=' expression ';' .
  StatementPtr AssignmentStmt() {
    auto assignment = std::make_unique<AssignmentStatement>(Here());
    assignment->target = Qualified(std::make_unique<NameReference>(TakeName()));
    Expect(TokenKind::Assign);
    assignment->value = Expr();
    return Ended(std::move(assignment));
  }

  // procedure_call_stmt = ( built_in_procedure | procedure_ref ) [ actual_parameter_list ] ';' .
  StatementPtr ProcedureCall() {
    auto call = std::make_unique<ProcedureCallStatement>(Here());
    if (Kind() == TokenKind::Builtin) {
      call->builtin = BuiltinAt(at_);
      if (BuiltinRowOf(call->builtin).kind != BuiltinRow::Procedure) Fail("a statement");
    }
    call->name = TakeName();
    if (Kind() == TokenKind::LeftParenthesis) call->arguments = Arguments();
    if (call->builtin != Builtin::kCount) {
      CheckArguments(BuiltinRowOf(call->builtin), call->arguments.size(), call->where);
    }
    return Ended(std::move(call));
  }

  // alias_stmt = ALIAS variable_id FOR general_ref { qualifier } ';' stmt { stmt } END_ALIAS ';' .
  StatementPtr AliasStmt() {
    const std::size_t start = at_;
    auto alias = std::make_unique<AliasStatement>(Here());
    ++at_;
    alias->variable = NewVariable(VariableRole::Alias);
    Expect(TokenKind::For);
    alias->source = Qualified(std::make_unique<NameReference>(ExpectName("the name of a variable")));
    Expect(TokenKind::Semicolon);
    alias->body = Statements();
    return Closed(start, std::move(alias));
  }

  // case_stmt = CASE selector OF { case_action } [ OTHERWISE ':' stmt ] END_CASE ';' .
  // case_action = case_label { ',' case_label } ':' stmt .
  StatementPtr CaseStmt() {
    const std::size_t start = at_;
    auto statement = std::make_unique<CaseStatement>(Here());
    ++at_;
    statement->selector = Expr();
    Expect(TokenKind::Of);
    while (!EndsStatements(Kind())) {
      CaseStatement::Action action;
      do {
        action.labels.push_back(Expr());
      } while (Get(TokenKind::Comma));
      Expect(TokenKind::Colon);
      action.statement = Stmt();
      statement->actions.push_back(std::move(action));
    }
    if (Get(TokenKind::Otherwise)) {
      Expect(TokenKind::Colon);
      statement->otherwise = Stmt();
    }
    return Closed(start, std::move(statement));
  }

  // if_stmt = IF logical_expression THEN stmt { stmt } [ ELSE stmt { stmt } ] END_IF ';' .
  StatementPtr IfStmt() {
    const std::size_t start = at_;
    auto statement = std::make_unique<IfStatement>(Here());
    ++at_;
    statement->condition = Expr();
    Expect(TokenKind::Then);
    statement->thenBody = Statements();
    if (Get(TokenKind::Else)) statement->elseBody = Statements();
    return Closed(start, std::move(statement));
  }

  // repeat_stmt = REPEAT [ increment_control ] [ while_control ] [ until_control ] ';' stmt { stmt }
  //               END_REPEAT ';' .
  StatementPtr RepeatStmt() {
    const std::size_t start = at_;
    auto repeat = std::make_unique<RepeatStatement>(Here());
    ++at_;
    if (Kind() == TokenKind::Identifier) {
      repeat->variable = NewVariable(VariableRole::Repeat);
      Expect(TokenKind::Assign);
      repeat->first = Expr();
      Expect(TokenKind::To);
      repeat->last = Expr();
      if (Get(TokenKind::By)) repeat->increment = Expr();
    }
    if (Get(TokenKind::While)) repeat->whileCondition = Expr();
    if (Get(TokenKind::Until)) repeat->untilCondition = Expr();
    Expect(TokenKind::Semicolon);
    repeat->body = Statements();
    return Closed(start, std::move(repeat));
  }

  Model& model_;
  Model::File& file_;
  Diagnostics& diagnostics_;
  const std::vector<Token> tokens_;
  std::size_t at_ = 0;
  bool isEndHidden_ = false;
  SchemaDeclaration* schema_ = nullptr;
  Entity* entity_ = nullptr;
  std::vector<std::unique_ptr<Express::Declaration>>* declarations_ =
      nullptr;                                // of the schema or an algorithm
  Express::Declaration* declared_ = nullptr;  // the innermost declaration that is being read
  int nesting_ = 0;                           // of brackets in the expression
  int blockDepth_ = 0;                        // of statements
  int algorithmDepth_ = 0;
};

}  // namespace

void ParseFile(Model& model, SourceFile source, Diagnostics& diagnostics) {
  auto file = std::make_unique<Model::File>();
  file->source = std::make_unique<SourceFile>(std::move(source));
  model.files.push_back(std::move(file));
  Parser(model, *model.files.back(), diagnostics).Syntax();
}

}  // namespace VELMAR::Express
