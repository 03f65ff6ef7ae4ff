// Trigger expressions, unit values and near names.
#include <gtest/gtest.h>

#include "platform/text/near_names.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {
namespace {

std::string text(const QString& s) {
  return s.toStdString();
}

TEST(TriggerExpressionTest, TruthTablesFollowPrecedence) {
  // Row 0 first; unit a is bit 0 of the row, b bit 1, c bit 2.
  const struct {
    const char *expression, *table;
  } table[] = {{"a | b & c", "01010111"},
               {"a ^ b | c", "01101111"},
               {"a ^ b & c", "01010110"},
               {"!a && !(b || !c)", "00001000"}};
  ParsedExpression parsed;
  QString error;
  for (const auto& row : table) {
    ASSERT_TRUE(parseTriggerExpression(row.expression, parsed, error)) << row.expression << ": " << text(error);
    EXPECT_EQ(parsed.steps[0].truthTable, row.table) << row.expression;
  }
  ASSERT_TRUE(parseTriggerExpression("u0&u1&u2&u3&u4&u5&u6&u7&u8&u9&u10&u11 -> u11*65536", parsed, error));
  EXPECT_EQ(parsed.steps[0].truthTable, QByteArray(4095, '0') + '1');
  EXPECT_EQ(parsed.steps[1].truthTable, QByteArray(2048, '0') + QByteArray(2048, '1'));
  EXPECT_EQ(parsed.steps[1].count, 65536);
}

TEST(TriggerExpressionTest, ErrorsNameTheColumn) {
  const struct {
    QString expression;
    const char* error;
  } table[] = {
      {"", "column 1: expected a trigger unit"},
      {"TU1 TU2", "column 5: expected an operator"},
      {"(TU1 | TU2", "column 11: expected \")\" for the \"(\" at column 1"},
      {"TU1*0", "column 5: expected a count from 1 to 65536"},
      {"TU1*65537", "column 5: expected a count"},
      {"a\x01",
       "column 2: expected an operator, \"*\", \"->\" or the end, found a character that is not printable ASCII"},
      {QString(200, '!') + "a", "column 66: parentheses and \"!\" are nested more than 64 deep"},
      {QString(60000, '('), "column 66: parentheses and \"!\" are nested more than 64 deep"},
      {"a0|a1|a2|a3|a4|a5|a6|a7|a8|a9|b0|b1|b2", "column 37: more than 12 different trigger units"},
      {QString("a->").repeated(16) + "a", "column 49: more than 16 steps"},
      {QString(65536, 'a'), "column 1: the expression is longer than 65535"},
  };
  for (const auto& row : table) {
    ParsedExpression parsed;
    QString error;
    EXPECT_FALSE(parseTriggerExpression(row.expression, parsed, error));
    EXPECT_EQ(text(error).rfind(row.error, 0), 0u) << text(error) << "\nexpected: " << row.error;
  }
}

TEST(TriggerExpressionTest, RenamingTouchesWholeUnitNamesOnly) {
  EXPECT_EQ(text(renameUnitInExpression("TU1&TU11 | ( TU1 )*1 -> xTU1", "TU1", "n")), "n&TU11 | ( n )*1 -> xTU1");
}

TEST(UnitValueTest, DigitsBecomeBitsLeastSignificantFirstOrAreRefused) {
  const struct {
    const char *op, *radix;
    QString digits;
    int width;
    const char *value, *mask;  // null: refused
  } table[] = {
      {"==", "Bin", "1x01", 4, "1001", "1101"},
      {"!=", "Hex", "xF", 6, "111100", "111100"},  // the leading don't-care covers only two bits
      {"==", "Hex", "x", 9, "000000000", "000000000"},
      {"==", "Oct", "17", 4, "1111", "1111"},
      {">=", "Dec", "4294967296", 33, "000000000000000000000000000000001", "111111111111111111111111111111111"},
      {".RE.", "Bin", "10", 2, "01", "01"},
      {".SC.", "Hex", "C", 1, "0011", "1111"},
      {">=", "Hex", "IDLE", 4, "0010", "1111"},
      {"==", "Hex", "BEE", 4, "0011", "1111"},  // as a number it does not fit
      {"!=", "Hex", "A", 4, "0101", "1111"},    // name and number are the same
      {"==", "Hex", "B", 4, nullptr, nullptr},  // they differ
      {"==", "Hex", "0B", 4, "1101", "1111"},
      {"==", "Hex", "IDEL", 4, nullptr, nullptr},
      {".RE.", "Hex", "IDLE", 4, nullptr, nullptr},
      {"==", "Bin", "10000", 4, nullptr, nullptr},
      {"==", "Dec", "16", 4, nullptr, nullptr},
      {"<", "Bin", "x", 4, nullptr, nullptr},
      {".RE.", "Bin", "0", 4, nullptr, nullptr},
      {".RE.", "Bin", "x1", 4, nullptr, nullptr},
      {".SC.", "Bin", "1", 2, nullptr, nullptr},
      {".SC.", "Bin", "1x", 1, nullptr, nullptr},
      {".SC.", "Bin", QString(257, '1'), 1, nullptr, nullptr},
      {"==", "Hex", "", 4, nullptr, nullptr},
      {"==", "Hex", "1", 0, nullptr, nullptr},
      {"==", "Hex", "1", 4097, nullptr, nullptr},
      {"==", "Oct", "8", 4, nullptr, nullptr},
      {"==", "Dec", QString(200000, '9'), 4096, nullptr, nullptr},
  };
  const EnumNames names = {{"IDLE", "0010"}, {"p::A", "0101"}, {"B", "0000"}, {"BEE", "0011"}};
  for (const auto& row : table) {
    SCOPED_TRACE(text(QString("%1 %2 %3").arg(row.op, row.radix, row.digits.left(50))));
    Operator op;
    Radix radix;
    QByteArray value, mask;
    QString error;
    ASSERT_TRUE(operatorFromText(row.op, op) && radixFromText(row.radix, radix));
    const bool taken =
        parseUnitValue(op, radix, row.digits, row.width, value, mask, error, row.width == 4 ? names : EnumNames());
    EXPECT_EQ(taken, row.value != nullptr) << text(error);
    EXPECT_EQ(taken, error.isEmpty());
    EXPECT_TRUE(!taken || (value == row.value && mask == row.mask)) << value.data() << ' ' << mask.data();
  }
}

TEST(NamesTest, NearOnesComeFirst) {
  NearestNames near("u_uart/stat");
  for (const char* name : {"u_uart/state", "clk", "u_uart/STAT", "u_uart/start", "u_uart/data"}) near.offer(name);
  EXPECT_EQ(text(near.hint()), " (did you mean u_uart/STAT, u_uart/start, u_uart/state?)");
}

}  // namespace
}  // namespace ost
