#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcTypes.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace VN_SDAI {

class VnIfcSelect;

/// Why a parameter could not become its attribute's value.
enum class VnSpfProblem : std::uint8_t {
    kNone,
    kWrongKind,         ///< a token of another kind than the attribute's
    kOutOfRange,        ///< a number that the attribute's type cannot hold
    kReservedValue,     ///< a value that would read as "unset" in memory
    kUnknownLiteral,    ///< an enumeration literal that the type does not have
    kUnknownSelectType, ///< a typed value that the select does not have
    kMalformed,         ///< no token of the exchange structure
    kMissingComma,
    kNotDerived, ///< a value where the subtype derives the attribute
    kNotRead,    ///< a value that the schema library leaves unread by design
};

/// What was accepted although the file should have said it in another way.
enum class VnSpfAccepted : std::uint8_t {
    kBareElement,   ///< a bare value in place of a list of one
    kEqualElements, ///< equal elements of a set, which holds each once
    kEmptyForm,     ///< no elements as "$" where "()" would be written, or the other way round
};

/// Why a value could not be written as it is held.
enum class VnSpfUnwritable : std::uint8_t {
    kForeignReference, ///< an instance of another model, whose number means another one here; "$" is written
    kNotFinite,        ///< an infinite number; "$" is written
    kNoValue,          ///< a select whose chosen member has no value; "$" is written
    kNoText,           ///< bytes that are no exchange text; they are written as they are
};

/// Position in the bytes of a parameter list, which NULs follow as kVnSpfPadding says.
class VNIFC_API VnSpfReadHelper {
public:
    /// Looks ahead: true, and the character consumed, when it is the next significant one.
    bool skipUntilRet(char character) noexcept {
        if (*next != character && peek() != character)
            return false;
        if (next >= end)
            return false;
        ++next;
        return true;
    }
    /// Discards the rest of a malformed parameter, up to the comma or parenthesis that ends it; with `before` it is the
    /// comma in front of the parameter that is missing.
    void ignoreParamter(bool before);
    /// Moves to the next character that is neither blank nor in a comment, and returns it; NUL at the end.
    char peek() noexcept {
        if (static_cast<unsigned char>(*next) <= ' ' || *next == '/')
            skipBlanks();
        return *next;
    }

    /// The next byte to be read; not owned.
    const char* next = nullptr;
    /// The end of the parameter list's bytes.
    const char* end = nullptr;

private:
    friend class VnSpfFilerBase;
    void skipBlanks() noexcept;
};

/// Reads and writes the parameter list of one instance (ISO 10303-21, 12). The entity classes say which attribute comes
/// next, the filer knows the characters. Two flags accompany most calls: `optional`, the attribute may be "$", and
/// `separated`, a comma precedes the field. The reading calls return whether a value was read; what cannot be read
/// leaves the argument unset, is reported, and the next call goes on with the next parameter.
class VNIFC_API VnSpfFilerBase {
public:
    VnSpfFilerBase();
    virtual ~VnSpfFilerBase();
    VnSpfFilerBase(const VnSpfFilerBase&) = delete;
    VnSpfFilerBase& operator=(const VnSpfFilerBase&) = delete;

    /// Says which position of the parameter list, from 0, comes next. Both directions.
    void field(unsigned position) {
        if (m_watched)
            watchField(position);
        m_position = position;
    }

    // Reading: whole attributes
    ///@{
    /// Reads one attribute. A value of another kind, "$" and a missing parameter leave `value` unset and give false.
    /// Strings are kept as exchange text with apostrophes single (ISO 10303-21, 6.4.3). A string for a buffer fills it
    /// with its first `length` bytes and NULs after them; a longer one is reported.
    bool rdLimitedString(char* buffer, std::size_t length, bool optional, bool separated);
    bool rdVnAnsiString(VnAnsiString& value, bool optional, bool separated);
    bool rdDouble(double& value, bool optional, bool separated);
    bool rdInt(int& value, bool optional, bool separated);
    bool rdPrimitive(VnIfcLogical& value, bool optional, bool separated);
    bool rdPrimitive(VnIfcBoolean& value, bool optional, bool separated);
    bool rdReference(VnDbObjectId& value, bool separated, bool optional = true);
    bool rdSelect(VnIfcSelect& value, bool optional, bool separated);
    ///@}
    /// The literal without its dots; empty when unset.
    VnAnsiString rdEnumerationToStr(bool optional, bool separated);
    /// As rdEnumerationToStr, without a copy; valid as long as the bytes that are read.
    std::string_view rdEnumeration(bool optional, bool separated);
    /// Reads the "*" of an attribute that a subtype derives; anything else is reported, kept as
    /// text, and gives false.
    bool rdDerive(bool separated);
    /// Passes over a binary value.
    void rdBinary(bool separated, bool optional = true);

    /// Begins an aggregate; false when it is unset or absent. Strings in it are texts, or binary values.
    bool openAggregate(bool separated, bool isBinary, bool optional = true);
    /// Ends it; what could not be `read` does not fit.
    void closeAggregate(bool read);
    /// To be called for an aggregate that turned out to have no elements, with the form in which it will be written:
    /// the file may have the other one.
    void compareEmptyForm(bool writtenAsUnset);

    // Reading: elements of aggregates; "$" reads as the unset value
    ///@{
    /// Reads one element of an aggregate.
    bool rdPrimitive(double& value, bool separated);
    bool rdPrimitive(int& value, bool separated);
    bool rdPrimitive(VnDbObjectId& value, bool separated);
    bool rdPrimitive(VnAnsiString& value, bool separated);
    bool rdPrimitive(VnIfcSelect& value, bool separated);
    ///@}

    /// Consumes the next significant character if it is this one.
    bool skipUntil(char character) { return m_helper.skipUntilRet(character); }
    /// Moves past the next such character of this parameter list; false when there is none.
    bool ignoreUntilComments(char character, bool);
    /// Where reading stands; owned by the filer.
    VnSpfReadHelper& helper() noexcept { return m_helper; }
    /// Called by the field layer for what it accepted although it was not as it should be.
    virtual void onAccepted(VnSpfAccepted what);
    /// The parameter at hand does not fit its attribute; its text is kept.
    void misfit(VnSpfProblem problem);

    // Writing: whole attributes
    ///@{
    /// Writes one attribute, "$" for an unset value. `optional` changes nothing: an unset mandatory attribute is "$",
    /// too. Of a string in a buffer the bytes before the first NUL are written, at most `length`. A reference to an
    /// erased instance is written "$".
    void wrLimitedString(const char* value, std::size_t length, bool optional, bool separated);
    void wrVnAnsiString(const VnAnsiString& value, bool optional, bool separated);
    void wrDouble(const double& value, bool optional, bool separated);
    void wrInt(const int& value, bool optional, bool separated);
    void wrPrimitive(const VnIfcLogical& value, bool optional, bool separated);
    void wrPrimitive(const VnIfcBoolean& value, bool optional, bool separated);
    void wrReference(const VnDbObjectId& value, bool separated);
    void wrSelect(const VnIfcSelect& value, bool optional, bool separated);
    ///@}
    ///@{
    /// Writes a literal, which is given without dots; "$" for an empty one.
    void wrEnumerationStr(const VnAnsiString& literal, bool optional, bool separated) {
        wrEnumeration(literal.view(), optional, separated);
    }
    void wrEnumeration(std::string_view literal, bool optional, bool separated);
    ///@}
    /// Writes the "*" of an attribute that a subtype derives.
    void wrDerive(bool separated);

    // Writing: elements of aggregates
    ///@{
    /// Writes one element of an aggregate, "$" for an unset value.
    void wrPrimitive(const double& value);
    void wrPrimitive(const int& value);
    void wrPrimitive(const VnDbObjectId& value);
    void wrPrimitive(const VnAnsiString& value);
    void wrPrimitive(const VnIfcSelect& value);
    ///@}
    /// An element of a list of binary values: in double quotes, or "$" for one that is none.
    void wrBinaryElement(const VnAnsiString& value);
    /// Writes one character as it is.
    void wrChar(char character) {
        if (m_out == m_outEnd)
            growOutput(1);
        *m_out++ = character;
    }

protected:
    /// The slot of an instance number that a parameter names.
    virtual VnIfcInstanceSlot* slotOf(std::uint64_t number) = 0;
    /// A parameter that does not fit, with the text of the whole parameter.
    virtual void onMisfit(unsigned position, VnSpfProblem problem, const char* begin, const char* end);
    /// A mandatory attribute, at m_position, is "$".
    virtual void onMandatoryUnset(const char* at);
    /// A value that cannot be written as it is held, at m_position.
    virtual void onUnwritable(VnSpfUnwritable why);
    /// A position of the list begins, while the filer is watched.
    virtual void watchField(unsigned position);

    /// Slots by number; numbers that have none there are asked for through slotOf.
    void lookUpIn(const VnIfcSlotPages& slots) noexcept { m_slots = slots; }
    /// Begins with a parameter list, between its parentheses, whose bytes are not owned, and which NULs follow as
    /// kVnSpfPadding says.
    void startReading(const char* begin, const char* end) noexcept;
    /// Ends the list; true when everything was read. Otherwise [first, second) is what the list still holds, and
    /// `second` stands at its closing parenthesis, or at the end of the bytes where there is none.
    bool finishReading(const char*& surplusBegin, const char*& surplusEnd);
    /// The text of the parameter at hand, up to the comma after it.
    std::string_view parameterText() const noexcept;
    /// The text of its value: without what follows it where the comma was forgotten.
    std::string_view valueText() const noexcept;
    /// Number of parameters that were there, as far as they were asked for.
    unsigned parametersSeen() const noexcept { return m_seen; }
    /// True when more were asked for than there are.
    bool ranShort() const noexcept { return m_short; }

    /// The text written so far; the output keeps its memory when cleared.
    std::string_view output() const noexcept { return {m_outBegin, static_cast<std::size_t>(m_out - m_outBegin)}; }
    /// Forgets the text written so far.
    void clearOutput() noexcept { m_out = m_outBegin; }
    /// Writes a text as it is.
    void write(std::string_view text);
    /// Writes an instance number in decimal digits.
    void writeNumber(std::uint64_t number);

    const VnIfcModel* m_home = nullptr; ///< when writing, the model that references must be of; null: any
    bool m_encodesText = false;         ///< writes what is no exchange text encoded
    /// Set by a derived class that wants watchField to be called.
    bool m_watched = false;
    /// Set when a select took an instance, which it classifies when all instances are there.
    bool m_tookPending = false;
    /// Of the parameter at hand, from 0.
    unsigned m_position = 0;

private:
    enum class Token : std::uint8_t { kValue, kUnset, kNothing };

    Token beginField(bool separated, bool optional = true);
    bool separatorMissing();
    bool failField(VnSpfProblem problem);
    bool atDelimiter() const noexcept;
    bool readPlainText(std::string_view& text) noexcept;
    bool readReal(double& value, VnSpfProblem& problem);
    bool readInteger(std::int64_t& value, VnSpfProblem& problem);
    bool readReference(VnDbObjectId& value);
    bool readString(VnAnsiString& value, char quote);
    bool readText(VnAnsiString& value);
    std::string_view readLiteral();
    bool readSelectValue(VnIfcSelect& value);
    bool readTypedValue(VnIfcSelect& value);
    bool readSelectSimple(VnIfcSelect& value, VnTypeCodeKind kind);
    void writeSelectValue(const VnIfcSelect& value);
    bool readSelectField(VnIfcSelect& value, std::string_view name);
    template <class Read>
    bool readElement(bool separated, Read read);
    bool failValue(VnSpfProblem problem);

    void separate(bool separated) {
        if (separated)
            wrChar(',');
    }
    void growOutput(std::size_t need);
    char* reserve(std::size_t need) {
        if (static_cast<std::size_t>(m_outEnd - m_out) < need)
            growOutput(need);
        return m_out;
    }
    void writeString(std::string_view text);
    bool writeExchangeText(std::string_view text);
    void writeReal(double value);
    void writeInteger(std::int64_t value);

    VnSpfReadHelper m_helper;
    VnIfcSlotPages m_slots;
    const char* m_fieldBegin = nullptr;
    unsigned m_seen = 0;
    bool m_failed = false;
    bool m_nested = false;
    bool m_short = false;
    char m_elementQuote = '\'';
    VnSpfProblem m_problem = VnSpfProblem::kNone;

    char* m_outBegin = nullptr;
    char* m_out = nullptr;
    char* m_outEnd = nullptr;
};

} // namespace VN_SDAI
