#include "host/settings/settings_parser.h"

#include <expat.h>

#include <exception>
#include <new>

#include "host/settings/settings_builder.h"
#include "service/failures.h"

namespace zlutil::settings::host {

// The callbacks of the XML parser. Nothing may be thrown through its C frames, so a callback notes
// what went wrong, stops the parser, and parse() raises it. After a stop the parser may still call.
class SettingsParser::Handler {
 public:
  Handler(const ParseRules& rules, const std::string& shownName)
      : shownName_(shownName), builder_(rules), xml_(XML_ParserCreate(nullptr)) {
    if (!xml_) throw std::bad_alloc();
    XML_SetUserData(xml_, this);
    XML_SetElementHandler(xml_, onBegin, onEnd);
    XML_SetCharacterDataHandler(xml_, onText);
    XML_SetStartDoctypeDeclHandler(xml_, onDoctype);
  }
  ~Handler() { XML_ParserFree(xml_); }
  Handler(const Handler&) = delete;
  Handler& operator=(const Handler&) = delete;

  void* buffer(std::size_t size) {
    void* const place = XML_GetBuffer(xml_, static_cast<int>(size));
    if (!place) throw std::bad_alloc();
    return place;
  }

  void parse(std::size_t size, bool isLast) {
    const XML_Status status = XML_ParseBuffer(xml_, static_cast<int>(size), isLast);
    if (unexpected_) std::rethrow_exception(unexpected_);
    if (!problem_.empty()) raise();
    if (status == XML_STATUS_OK) return;
    const XML_Error error = XML_GetErrorCode(xml_);
    if (error == XML_ERROR_NO_MEMORY || error == XML_ERROR_UNEXPECTED_STATE) {
      throw Failure<KORVEN::settings::core::SaxUnknownException>(
          shownName_, std::string(XML_ErrorString(error)));
    }
    note(XML_ErrorString(error));
    raise();
  }

  NodePtr root() const { return builder_.root(); }

 private:
  // Notes a problem and where the parser is now; after a stop it would say where the next thing is.
  void note(const char* problem) {
    problem_ = problem;
    line_ = XML_GetCurrentLineNumber(xml_);
    column_ = XML_GetCurrentColumnNumber(xml_) + 1;
  }

  [[noreturn]] void raise() const {
    throw Failure<KORVEN::settings::core::SaxParseException>(
        shownName_, std::to_string(line_), std::to_string(column_),
        base::narrowFromUstring(base::to_ustring(problem_)));
  }

  bool hasFailed() const { return unexpected_ || !problem_.empty(); }

  template <class Step>
  void guarded(const Step& step) noexcept {
    if (hasFailed()) return;
    try {
      step();
    } catch (const FormatError& error) {
      note(error.what());
    } catch (...) {
      unexpected_ = std::current_exception();
    }
    if (hasFailed()) XML_StopParser(xml_, XML_FALSE);
  }

  static void onBegin(void* self, const XML_Char* element, const XML_Char** attributes) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.guarded([&] { handler.builder_.beginElement(element, attributes); });
  }
  static void onEnd(void* self, const XML_Char*) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.guarded([&] { handler.builder_.endElement(); });
  }
  static void onText(void* self, const XML_Char* text, int length) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.guarded([&] { handler.builder_.text({text, static_cast<std::size_t>(length)}); });
  }
  // A document type could declare entities, which expand without bound or read other files.
  static void onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    Handler& handler = *static_cast<Handler*>(self);
    handler.guarded([] { throw FormatError("a document type declaration is not allowed"); });
  }

  const std::string shownName_;
  SettingsBuilder builder_;
  const XML_Parser xml_;
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
