#include "host/files/settings_parser.h"

#include <expat.h>

#include <cstdint>
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "host/files/settings_builder.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

constexpr std::uint64_t kMaxMarkup = std::uint64_t{4} << 20;
constexpr char kAmpersand[] = "\"&\" is written \"&amp;\"";

}  // namespace

// The callbacks of the XML parser. An exception must not cross its C frames, so a callback stores
// the error and stops the parser, and parse() throws it. A stopped parser may still call back.
class SettingsParser::Handler {
 public:
  Handler(const ParseRules& rules, const std::string& shownName)
      : rules_(rules),
        shownName_(shownName),
        builder_(rules, [this] { return position(); }),
        xml_(XML_ParserCreate(nullptr)) {
    if (!xml_) throw std::bad_alloc();
    XML_SetUserData(xml_, this);
    XML_SetElementHandler(xml_, onBegin, onEnd);
    XML_SetCharacterDataHandler(xml_, onText);
    XML_SetStartDoctypeDeclHandler(xml_, onDoctype);
    XML_SetDefaultHandlerExpand(xml_, onOther);
  }
  ~Handler() { XML_ParserFree(xml_); }
  Handler(const Handler&) = delete;
  Handler& operator=(const Handler&) = delete;

  void* buffer(std::size_t size) {
    void* const buffer = XML_GetBuffer(xml_, static_cast<int>(size));
    if (!buffer) throw std::bad_alloc();
    return buffer;
  }

  void parse(std::size_t size, bool isLast) {
    read_ += size;
    const XML_Status status = XML_ParseBuffer(xml_, static_cast<int>(size), isLast);
    if (unexpected_) std::rethrow_exception(unexpected_);
    if (!problem_.empty()) throwProblem();
    if (status == XML_STATUS_OK) return checkLength();
    const XML_Error error = XML_GetErrorCode(xml_);
    if (error == XML_ERROR_NO_MEMORY || error == XML_ERROR_UNEXPECTED_STATE) {
      throw Failure<KORVEN::settings::core::SaxUnknownException>(
          shownName_, std::string(XML_ErrorString(error)));
    }
    noteProblem(explained(error).c_str());
    throwProblem();
  }

  // Throws SaxParseException if no callback has come for kMaxMarkup bytes: the parser is inside a
  // tag, a comment or an instruction, which it may scan again with each piece of the file. Not
  // every version of the parser tells its position between two pieces.
  void checkLength() {
    if (read_ - lastCallback_ <= kMaxMarkup) return;
    noteProblem(
        ("a tag or a comment is longer than " + std::to_string(kMaxMarkup >> 20) + " MB").c_str());
    throwProblem();
  }

  NodePtr root() const { return builder_.root(); }

 private:
  std::string position() const {
    return shownName_ + ':' + std::to_string(XML_GetCurrentLineNumber(xml_)) + ':' +
           std::to_string(XML_GetCurrentColumnNumber(xml_) + 1);
  }

  // Stores a problem with the parser's position, which moves on after a stop.
  void noteProblem(const char* problem) {
    problem_ = problem;
    line_ = XML_GetCurrentLineNumber(xml_);
    column_ = XML_GetCurrentColumnNumber(xml_) + 1;
  }

  // Returns the parser's message and the remedy, if one is known.
  std::string explained(XML_Error error) const {
    switch (error) {
      case XML_ERROR_TAG_MISMATCH:
        return "mismatched tag: " + openElement() + ", expected its end";
      case XML_ERROR_NO_ELEMENTS:
      case XML_ERROR_UNCLOSED_TOKEN:
        if (!open_.empty()) return "the file ends too early: " + openElement();
        return "the file has no element, expected <settings>";
      case XML_ERROR_UNDEFINED_ENTITY:
        return std::string("undefined entity: ") + kAmpersand;
      case XML_ERROR_UNKNOWN_ENCODING:
      case XML_ERROR_INCORRECT_ENCODING:
        return std::string(XML_ErrorString(error)) + ": the file is not in the encoding that it " +
               "declares, or that is unknown; expected UTF-8";
      case XML_ERROR_INVALID_TOKEN:
      case XML_ERROR_PARTIAL_CHAR:
        return std::string(XML_ErrorString(error)) + reasonOfToken();
      default:
        return XML_ErrorString(error);
    }
  }

  std::string openElement() const {
    return '<' + open_.back().first + "> is open since line " + std::to_string(open_.back().second);
  }

  // Explains the character at which the parser has stopped, if it is a frequent mistake.
  std::string reasonOfToken() const {
    int offset = 0, size = 0;
    const char* const context = XML_GetInputContext(xml_, &offset, &size);
    if (!context || offset >= size) return "";
    const std::string_view before(context, offset), rest(context + offset, size - offset);
    if (static_cast<unsigned char>(rest.front()) >= 0x80 && base::wellFormedLength(rest) == 0) {
      return ": the bytes are not UTF-8, and no other encoding is declared";
    }
    if (rest.front() == '<') return ": \"<\" is written \"&lt;\"";
    const std::size_t last = before.find_last_not_of(
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.:#");
    const bool isReference = last != std::string_view::npos && before[last] == '&';
    return isReference || rest.front() == '&' ? std::string(": ") + kAmpersand : "";
  }

  using ParseFailure = Failure<KORVEN::settings::core::SaxParseException>;

  ParseFailure failureOfProblem() const {
    return ParseFailure(shownName_, std::to_string(line_), std::to_string(column_),
                        base::narrowFromUstring(base::to_ustring(problem_)));
  }
  [[noreturn]] void throwProblem() const { throw failureOfProblem(); }

  // Runs a step of the builder. Returns false if it has found a mistake that was handed over.
  template <class Step>
  bool build(const Step& step) {
    try {
      step();
      return true;
    } catch (const FormatError& error) {
      if (!rules_.onMistake) throw;
      noteProblem(error.what());
      rules_.onMistake(failureOfProblem().GetMessageTxt());
      problem_.clear();
      return false;
    }
  }

  void begin(const XML_Char* element, const XML_Char** attributes) {
    open_.emplace_back(element, XML_GetCurrentLineNumber(xml_));
    if (skipped_ > 0) {
      ++skipped_;
    } else if (!build([&] { builder_.beginElement(element, attributes); })) {
      if (!builder_.beginSubstitute(element)) skipped_ = 1;
    } else if (rules_.onValue) {
      if (const Key* const key = builder_.keyOfValue()) {
        rules_.onValue(*key, XML_GetCurrentLineNumber(xml_), XML_GetCurrentColumnNumber(xml_) + 1);
      }
    }
  }

  void end() {
    open_.pop_back();
    if (skipped_ > 0) {
      --skipped_;
    } else {
      build([&] { builder_.endElement(); });
    }
  }

  void text(std::string_view text) {
    if (skipped_ == 0) build([&] { builder_.text(text); });
  }

  bool hasFailed() const { return unexpected_ || !problem_.empty(); }

  template <class Step>
  void runCallback(const Step& step) noexcept {
    lastCallback_ = static_cast<std::uint64_t>(XML_GetCurrentByteIndex(xml_));
    if (hasFailed()) return;
    try {
      step();
    } catch (const FormatError& error) {
      noteProblem(error.what());
    } catch (...) {
      unexpected_ = std::current_exception();
    }
    if (hasFailed()) XML_StopParser(xml_, XML_FALSE);
  }

  static void onBegin(void* self, const XML_Char* element, const XML_Char** attributes) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.runCallback([&] { handler.begin(element, attributes); });
  }
  static void onEnd(void* self, const XML_Char*) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.runCallback([&] { handler.end(); });
  }
  static void onText(void* self, const XML_Char* text, int length) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.runCallback([&] { handler.text({text, static_cast<std::size_t>(length)}); });
  }
  // A document type could declare entities, which expand without bound or read other files.
  static void onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.runCallback([] { throw FormatError("a document type declaration is not allowed"); });
  }
  static void onOther(void* self, const XML_Char*, int) {
    static_cast<Handler*>(self)->runCallback([] {});
  }

  const ParseRules rules_;
  const std::string shownName_;
  SettingsBuilder builder_;
  const XML_Parser xml_;
  std::vector<std::pair<std::string, XML_Size>> open_;  // elements, with the lines of their tags
  int skipped_ = 0;  // the open elements that are not built, because the first of them is a mistake
  std::uint64_t read_ = 0;          // bytes
  std::uint64_t lastCallback_ = 0;  // its position in the file
  std::string problem_;
  XML_Size line_ = 0;
  XML_Size column_ = 0;
  std::exception_ptr unexpected_;
};

SettingsParser::SettingsParser(const ParseRules& rules, const std::string& shownName)
    : handler_(std::make_unique<Handler>(rules, shownName)) {}
SettingsParser::~SettingsParser() = default;

void* SettingsParser::buffer(std::size_t size) { return handler_->buffer(size); }
void SettingsParser::parse(std::size_t size, bool isLast) { handler_->parse(size, isLast); }
NodePtr SettingsParser::takeRoot() { return handler_->root(); }

}  // namespace zlutil::settings::host
