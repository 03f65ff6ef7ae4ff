// The setting of one option: its typed value, and the tests and reports that the option setters are made of.
#pragma once

#include <QList>
#include <QString>
#include <cstddef>
#include <string>
#include <vector>

#include "commands/option_list.h"
#include "framework/ist_com_data.h"

namespace ost_command {

/// A keyword that an option accepts in any case, and the service's code for it.
struct Keyword {
  const char* word;
  int code;
};

typedef std::vector<Keyword> KeywordSet;

extern const KeywordSet kOnOff;            ///< 1 on, 0 off.
extern const KeywordSet kPolarities;       ///< 0 active high, 1 active low.
extern const KeywordSet kImplementations;  ///< 0 EBR, 1 DRAM.
extern const KeywordSet kCaptureModes;     ///< 0 single, 1 multiple.
extern const KeywordSet kRadices;          ///< 0 Bin, 1 Oct, 2 Dec, 3 Hex.
extern const KeywordSet kOutputTypes;      ///< 0 IO, 1 NET, 2 BOTH.

/// One given option on its way to the service. A rejected value prints one catalogue message and changes nothing.
class OptionEdit {
 public:
  OptionEdit(mero::ostrel::IstComData& service, mero::ostrel::istCore* core, const std::string& typed);

  /// False, with message `code`, when a precondition does not hold.
  bool require(bool holds, const char* code) const;
  /// The service's code of the keyword; false, with message `rejectCode` unless that is null, for any other value.
  bool keyword(const KeywordSet& set, int& code, const char* rejectCode) const;
  /// The value as a base-10 integer; false, without a message, when it is none.
  bool number(int& value) const;
  void reject(const char* code, const std::string& arg1, const std::string& arg2 = std::string()) const;

  mero::ostrel::IstComData& service;
  mero::ostrel::istCore* const core;
  const std::string& typed;  ///< As given on the command line; what messages show.
  const QString text;        ///< Trimmed.
};

/// An option of a family: what it needs, which words it takes, and how it is set.
struct OptionRule {
  const char* name;
  /// What has to hold first, and the message when it does not; null when nothing has to.
  bool (*holds)(const OptionEdit& edit);
  const char* needCode;
  /// The keywords, whose code `set` gets, and the message for any other value (null: none). With null keywords `set`
  /// looks at the value itself and gets 0.
  const KeywordSet* words;
  const char* wordCode;
  void (*set)(const OptionEdit& edit, int code);
};

void appendOptions(const OptionRule* rules, std::size_t count, OptionList& options);
/// Applies every given option in the order of the rules, not of the command line, so that an option that others
/// depend on comes first.
void applyOptions(const OptionRule* rules, std::size_t count, mero::ostrel::IstComData& service,
                  mero::ostrel::istCore* core, const OptionList& options);

/// "a,b,c.\n", as the messages on numbers show what is valid.
std::string validList(const QList<int>& values);

// Pieces of the option listings.
void appendText(QString& out, const char* label, const QString& text);  ///< "label = text\n"
void appendSwitch(QString& out, const char* label, bool on);            ///< "label = on\n"
void appendPolarity(QString& out, const char* label, int polarity);     ///< "label = ACTIVE_LOW\n"
/// "label = 8\n"; of a number without a value (-1) the label alone, without a line feed.
void appendNumber(QString& out, const char* label, int value);

}  // namespace ost_command
