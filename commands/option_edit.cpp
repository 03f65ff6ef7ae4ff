// What the setters and listings of the trace and trigger options share.
#include "commands/option_edit.h"

#include "framework/text.h"

using mero::ostrel::IstComData;
using mero::ostrel::istCore;

namespace ost_command {

const KeywordSet kOnOff = {{"on", 1}, {"off", 0}};
const KeywordSet kPolarities = {{"ACTIVE_HIGH", 0}, {"ACTIVE_LOW", 1}};
const KeywordSet kImplementations = {{"EBR", 0}, {"DRAM", 1}};
const KeywordSet kCaptureModes = {{"single", 0}, {"multiple", 1}};
const KeywordSet kRadices = {{"BIN", 0}, {"OCT", 1}, {"DEC", 2}, {"HEX", 3}};
const KeywordSet kOutputTypes = {{"IO", 0}, {"NET", 1}, {"BOTH", 2}};

OptionEdit::OptionEdit(IstComData& service, istCore* core, const std::string& typed)
    : service(service), core(core), typed(typed), text(toServiceTrimmed(typed)) {}

bool OptionEdit::require(bool holds, const char* code) const {
  if (!holds) reject(code, std::string());
  return holds;
}

bool OptionEdit::keyword(const KeywordSet& set, int& code, const char* rejectCode) const {
  for (const Keyword& keyword : set) {
    if (text.compare(QLatin1String(keyword.word), Qt::CaseInsensitive) == 0) {
      code = keyword.code;
      return true;
    }
  }
  if (rejectCode) reject(rejectCode, typed);
  return false;
}

bool OptionEdit::number(int& value) const {
  bool isNumber = false;
  value = text.toInt(&isNumber, 10);
  return isNumber;
}

void OptionEdit::reject(const char* code, const std::string& arg1, const std::string& arg2) const {
  service.PrintMessage(code, arg1, arg2);
}

void appendOptions(const OptionRule* rules, std::size_t count, OptionList& options) {
  for (std::size_t i = 0; i < count; ++i) options.append(rules[i].name);
}

void applyOptions(const OptionRule* rules, std::size_t count, IstComData& service, istCore* core,
                  const OptionList& options) {
  for (std::size_t i = 0; i < count && i < options.size(); ++i) {
    const OptionEntry& entry = options.at(i);
    const OptionRule& rule = rules[i];
    if (!entry.set) continue;
    const OptionEdit edit(service, core, entry.value);
    int code = 0;
    if (rule.holds && !edit.require(rule.holds(edit), rule.needCode)) continue;
    if (rule.words && !edit.keyword(*rule.words, code, rule.wordCode)) continue;
    rule.set(edit, code);
  }
}

std::string validList(const QList<int>& values) {
  QString list;
  for (int i = 0; i < values.size(); ++i) {
    list += QString::number(values.at(i));
    list += QLatin1String(i + 1 < values.size() ? "," : ".\n");
  }
  return fromService(list);
}

void appendText(QString& out, const char* label, const QString& text) {
  out += QLatin1String(label);
  out += QLatin1String(" = ");
  out += text;
  out += QLatin1Char('\n');
}

void appendSwitch(QString& out, const char* label, bool on) {
  appendText(out, label, QString::fromLatin1(on ? "on" : "off"));
}

void appendPolarity(QString& out, const char* label, int polarity) {
  appendText(out, label, QString::fromLatin1(polarity ? "ACTIVE_LOW" : "ACTIVE_HIGH"));
}

void appendNumber(QString& out, const char* label, int value) {
  if (value != -1) return appendText(out, label, QString::number(value));
  out += QLatin1String(label);
  out += QLatin1String(" = ");
}

}  // namespace ost_command
