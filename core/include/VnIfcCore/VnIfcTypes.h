#pragma once
#include <cstdint>

namespace VN {

/// Result of exchange-file operations and of operations that can be refused; 0 is success.
enum ErrorStatus : int {
    eOk = 0,
    eRefused = 2,         ///< a property refused the value, or an aggregate is at one of its bounds
    eUnknownLiteral = 16, ///< unknown enumeration literal inside a typed select value
    eNotHandled = 18,     ///< a select member that the select does not handle itself
    eNoValue = 410,       ///< an enumeration-valued select member without a value to write
    eNotFound = 1001,     ///< a file, module or instance that is not there
    eCannotRead = 1002,   ///< the input cannot be read, or is no exchange file
    eCannotWrite = 1003,  ///< the output cannot be written; an existing file is left as it was
    eCancelled = 1004,    ///< the host cancelled the operation
};

} // namespace VN

namespace VN_SDAI {

/// Access to the instances of a model (ISO 10303-22, access modes).
enum SdaiAccessMode : int { sdaiNoAccess = 0, sdaiReadOnly = 1, sdaiReadWrite = 2 };

/// How an instance is opened through its handle.
enum OpenMode : int { kForRead = 0, kForWrite = 1 };

/// Kind of a value or type (the type codes of the dictionary and of select values).
enum class VnTypeCodeKind : std::int32_t {
    kNone = 0,
    kInteger = 2,
    kReal = 6,
    kBoolean = 7,
    kLogical = 8,
    kBinary = 9,
    kString = 12,
    kEntity = 13,
    kSelect = 14,
    kEnumeration = 15,
    kAggregation = 16,
};

/// The first number of a schema's version, which several releases share.
enum class IfcSchemaMajorVersion : int { kUnknown = 0, kIfc2 = 2, kIfc4 = 4 };
/// The second number: three for IFC2X3 and for both texts of IFC4X3.
enum class IfcSchemaMinorVersion : int { kZero = 0, kOne = 1, kTwo = 2, kThree = 3 };

class VnAnsiString;
class VnDbObjectId;
class VnIfcAggr;
class VnIfcEntityBase;
class VnIfcEntityType;
class VnIfcModel;
class VnIfcProperty;
class VnIfcNameType;
class VnIfcPropertyCollection;
class VnIfcSchema;
class VnIfcSelect;
class VnIfcVariant;
class VnSpfFilerBase;

} // namespace VN_SDAI
