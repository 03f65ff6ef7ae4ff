// The option commands: listings, the words that set options, and every option's own rule.
#include "commands/handlers.h"
#include "tests/unit/commands/command_fixture.h"

namespace {

typedef ServiceDouble D;

class OptionCommands : public CommandFixture {
 protected:
  /// Sets one option or several of a family and demands what the service sees, the getters of preconditions included.
  void expectSet(const char* words, const char* answers, const char* seen) {
    const std::string subCommand = family_;
    SCOPED_TRACE(words);
    EXPECT_EQ(TCL_OK, run("ost_trace " + subCommand + " " + words, [answers](D& d) { answer(d, answers); }));
    EXPECT_EQ("", result());
    EXPECT_EQ(seen, work());
  }
  /// "getter=value getter=value"
  static void answer(D& d, const std::string& pairs) {
    std::string::size_type start = 0;
    while (start < pairs.size()) {
      const std::string::size_type end = std::min(pairs.find(' ', start), pairs.size());
      const std::string pair = pairs.substr(start, end - start);
      d.answers[pair.substr(0, pair.find('='))] = pair.substr(pair.find('=') + 1);
      start = end + 1;
    }
  }
  const char* family_ = "trc_option";
};

TEST_F(OptionCommands, ListTraceOptions) {
  const auto list = [this](const char* answers) {
    EXPECT_EQ(TCL_OK, run("ost_trace trc_option", [answers](D& d) {
                answer(d, answers);
                d.answers["getCaptureModeName"] = "  Multiple Trigger Capture";
              }));
    return result();
  };
  EXPECT_EQ(
      "SampleEnable = off\nTriggerEnable = off\nBufferDepth = 16\nImplementation = EBR\nTimestamp = off\n"
      "CaptureMode = Multiple\nIncludeTrigger = off\n",
      list("getBufferDepth=16 getImplementaionName=EBR"));
  EXPECT_EQ(
      "SampleClk = clk\nSampleEnable = on\nSampleEnableSig = se\nSampleEnablePri = ACTIVE_LOW\nTriggerEnable = on\n"
      "TriggerEnable = te\nTriggerEnablePri = ACTIVE_HIGH\nNumberofTriggers = 4\nBufferDepth = 32\n"
      "Implementation = DRAM\nTimestamp = on\nTimestampBits = 40\nCaptureMode = Multiple\n"
      "MinimumSamplesPerTrigger = 8\nIncludeTrigger = on\n",
      list("getSampleClk=clk isSampleEnable=1 getSampleEnableSignal=se getSampleEnablePri=7 isTrigEnable=1 "
           "getTrigEnableSignal=te getCaptureNum=4 getBufferDepth=32 getImplementaionName=DRAM isTimeStamp=1 "
           "getTimeStampBits=40 getCaptureMode=1 getCaptureMin=8 isIncludeTrigger=1"));
  // A number without a value leaves its label, and the next label follows on the same line.
  EXPECT_EQ(
      "SampleEnable = off\nTriggerEnable = on\nTriggerEnable = \nTriggerEnablePri = ACTIVE_HIGH\n"
      "NumberofTriggers = BufferDepth = -2\nImplementation = \nTimestamp = on\nTimestampBits = CaptureMode = Multiple\n"
      "MinimumSamplesPerTrigger = IncludeTrigger = off\n",
      list("isTrigEnable=1 getCaptureNum=-1 getBufferDepth=-2 isTimeStamp=1 getTimeStampBits=-1 getCaptureMode=1 "
           "getCaptureMin=-1"));
}

TEST_F(OptionCommands, ListTriggerOptions) {
  const auto list = [this](const char* answers) {
    EXPECT_EQ(TCL_OK, run("ost_trace trig_option", [answers](D& d) { answer(d, answers); }));
    return result();
  };
  EXPECT_EQ("DefaultRadix = Bin\nEventCounter = off\nTriggerOut = off\n", list(""));
  EXPECT_EQ("EventCounter = on\nCounterValue = TriggerOut = off\n",
            list("getDefaultTrigRadix=4 isEventCounter=1 getEventCounter=-1"));
  EXPECT_EQ("EventCounter = off\nTriggerOut = off\n", list("getDefaultTrigRadix=-1"));
  EXPECT_EQ(
      "DefaultRadix = Hex\nEventCounter = on\nCounterValue = 10\nTriggerOut = on\nOutNetType = NET\nOutNetName = n\n"
      "OutNetPri = ACTIVE_LOW\nOutNetMPW = 3\n",
      list("getDefaultTrigRadix=3 isEventCounter=1 getEventCounter=10 isTriggerOut=1 getTriggerOutTypeName=NET "
           "getTriggerOutName=n getTriggerOutPolarity=1 getTriggerOutMPW=3"));
}

TEST_F(OptionCommands, Words) {
  expectSet("SampleClk =x sampleclk=x", "", "#0156(trace,) #0157(trace,) #0157(trace,sampleclk)");
  expectSet("BufferDepth=16 BufferDepth=32", "", "#0158(trace,BufferDepth) setBufferDepth(32)");
  expectSet("SampleClk=a=b", "", "setSampleClk(a=b)");
  expectSet("SampleClk=", "", "setSampleClk()");
  // White space is trimmed by the byte: the last byte of "à" is not a blank.
  expectSet("{SampleClk= voil\xc3\xa0\t}", "", "setSampleClk(voil\xc3\xa0)");
  family_ = "trig_option";
  expectSet("x SampleClk=x TriggerOut=on TriggerOut=off", "",
            "#0156(trigger,) #0157(trigger,SampleClk) #0158(trigger,TriggerOut) setTriggerOut(0)");
}

TEST_F(OptionCommands, TraceOptionRules) {
  const struct {
    const char *words, *answers, *seen;
  } cases[] = {
      {"SampleEnable=ON", "", "setSampleEnable(1)"},
      {"{SampleEnable= off }", "", "setSampleEnable(0)"},
      {"{SampleEnable= x}", "", "#0121( x,)"},
      {"SampleEnableSig=s", "", "isSampleEnable() #0122(,)"},
      {"SampleEnableSig=s SampleEnable=on", "", "setSampleEnable(1) isSampleEnable() setSampleEnableSignal(s)"},
      {"SampleEnablePri=active_low", "", "isSampleEnable() #0123(,)"},
      {"SampleEnablePri=active_low", "isSampleEnable=1", "isSampleEnable() setSampleEnablePri(1)"},
      {"SampleEnablePri=Active_High", "isSampleEnable=1", "isSampleEnable() setSampleEnablePri(0)"},
      {"SampleEnablePri=low", "isSampleEnable=1", "isSampleEnable() #0124(low,)"},
      {"BufferDepth=32", "", "setBufferDepth(32)"},
      {"BufferDepth=abc", "", "#0125(16,32.\\n,abc)"},
      {"{BufferDepth= 64}", "", "#0125(16,32.\\n, 64)"},
      {"Implementation=ebr", "", "setImplementation(0)"},
      {"Implementation=DRAM", "", "setImplementation(1)"},
      {"Implementation=x", "", "#0126(x,)"},
      {"Timestamp=On", "", "setTimeStamp(1)"},
      {"Timestamp=1", "", "#0127(1,)"},
      {"TimestampBits=40", "", "isTimeStamp() #0128(,)"},
      {"TimestampBits=40", "isTimeStamp=1 getBufferDepth=16", "isTimeStamp() getBufferDepth() setTimeStampBits(40)"},
      {"TimestampBits=16", "isTimeStamp=1 getBufferDepth=16", "isTimeStamp() getBufferDepth() setTimeStampBits(16)"},
      {"TimestampBits=63", "isTimeStamp=1 getBufferDepth=16", "isTimeStamp() getBufferDepth() setTimeStampBits(63)"},
      {"{TimestampBits=15 }", "isTimeStamp=1 getBufferDepth=16",
       "isTimeStamp() getBufferDepth() #0129(16 to 63. Ignore \",15 )"},
      {"TimestampBits=64", "isTimeStamp=1 getBufferDepth=16",
       "isTimeStamp() getBufferDepth() #0129(16 to 63. Ignore \",64)"},
      {"TimestampBits=40", "isTimeStamp=1 getBufferDepth=0", "isTimeStamp() getBufferDepth() #0129(,40)"},
      {"CaptureMode=Single", "", "setCaptureMode(0)"},
      {"CaptureMode=MULTIPLE", "", "setCaptureMode(1)"},
      {"CaptureMode=x", "", "#0130(x,)"},
      {"MinimumSamplesPerTrigger=8", "getBufferDepth=16", "getCaptureMode() #0131(,)"},
      {"MinimumSamplesPerTrigger=16 CaptureMode=multiple BufferDepth=32", "getBufferDepth=16",
       "setBufferDepth(32) setCaptureMode(1) getCaptureMode() getBufferDepth() setCaptureMin(16)"},
      {"MinimumSamplesPerTrigger=9", "getBufferDepth=16 getCaptureMode=2",
       "getCaptureMode() getBufferDepth() #0132(8.\\n,9)"},
      {"IncludeTrigger=off", "", "setIncludeTrigger(0)"},
      {"IncludeTrigger=x", "", "#0133(x,)"},
      {"TriggerEnable=on", "", "setTrigEnable(1)"},
      {"TriggerEnable=x", "", "#0134(x,)"},
      {"TriggerEnableSig=s", "", "isTrigEnable() #0135(,)"},
      {"TriggerEnableSig=s", "isTrigEnable=1", "isTrigEnable() setTrigEnableSignal(s)"},
      {"TriggerEnablePri=x", "", "isTrigEnable() #0136(,)"},
      {"TriggerEnablePri=ACTIVE_LOW", "isTrigEnable=1", "isTrigEnable() setTrigEnablePri(1)"},
      {"TriggerEnablePri=x", "isTrigEnable=1", "isTrigEnable() #0137(x,)"},
      {"NumberofTriggers=4", "isTrigEnable=1", "getCaptureMode() #0138(,)"},
      {"NumberofTriggers=4", "getCaptureMode=1", "getCaptureMode() isTrigEnable() #0139(,)"},
      {"NumberofTriggers=4", "getCaptureMode=1 isTrigEnable=1 getBufferDepth=32",
       "getCaptureMode() isTrigEnable() getBufferDepth() setCaptureNum(4)"},
      {"NumberofTriggers=5", "getCaptureMode=1 isTrigEnable=1 getBufferDepth=32",
       "getCaptureMode() isTrigEnable() getBufferDepth() #0140(1,4.\\n,5)"},
      {"DistRAMDisable=ON", "", "setDisableDistRAM(1)"},
      {"DistRAMDisable=off", "", "setDisableDistRAM(0)"},
      {"DistRAMDisable=maybe", "", ""},
  };
  for (const auto& c : cases) expectSet(c.words, c.answers, c.seen);
}

TEST_F(OptionCommands, TriggerOptionRules) {
  family_ = "trig_option";
  const struct {
    const char *words, *answers, *seen;
  } cases[] = {
      {"DefaultRadix=bin", "", "setDefaultTrigRadix(0)"},
      {"DefaultRadix=Oct", "", "setDefaultTrigRadix(1)"},
      {"DefaultRadix=DEC", "", "setDefaultTrigRadix(2)"},
      {"{DefaultRadix= Hex }", "", "setDefaultTrigRadix(3)"},
      {"DefaultRadix=16", "", "#0141(16,)"},
      {"EventCounter=x", "", "#0142(x,)"},
      {"CounterValue=10", "", "isEventCounter() #0143(,)"},
      {"CounterValue=10 EventCounter=on", "", "setEventCounter(1) isEventCounter() setEventCounterValue(10)"},
      {"CounterValue=1", "isEventCounter=1", "isEventCounter() #0144(1,)"},
      {"CounterValue=x", "isEventCounter=1", "isEventCounter() #0144(x,)"},
      {"TriggerOut=ON", "", "setTriggerOut(1)"},
      {"TriggerOut=x", "", "#0145(x,)"},
      {"OutNetType=net", "", "isTriggerOut() #0146(,)"},
      {"OutNetType=io", "isTriggerOut=1", "isTriggerOut() setTriggerOutType(0)"},
      {"OutNetType=net", "isTriggerOut=1", "isTriggerOut() setTriggerOutType(1)"},
      {"OutNetType=Both", "isTriggerOut=1", "isTriggerOut() setTriggerOutType(2)"},
      {"OutNetType=x", "isTriggerOut=1", "isTriggerOut() #0147(x,)"},
      {"OutNetName=n", "", "isTriggerOut() #0148(,)"},
      {"{OutNetName= n }", "isTriggerOut=1", "isTriggerOut() setTriggerOutName(n)"},
      {"{OutNetName=bad1 }", "isTriggerOut=1", "isTriggerOut() #0149(bad1 ,)"},
      {"{OutNetName=bad2 }", "isTriggerOut=1", "isTriggerOut() #0150(bad2 ,bad2 )"},
      {"OutNetName=bad3", "isTriggerOut=1", "isTriggerOut() #0151(bad3,bad3)"},
      {"OutNetName=bad-1", "isTriggerOut=1", "isTriggerOut() #0151(bad-1,bad-1)"},
      {"OutNetPri=active_low", "", "isTriggerOut() #0152(,)"},
      {"OutNetPri=active_low", "isTriggerOut=1", "isTriggerOut() setTriggeroutPolarity(1)"},
      {"OutNetPri=x", "isTriggerOut=1", "isTriggerOut() #0153(x,)"},
      {"OutNetMPW=1", "", "isTriggerOut() #0154(,)"},
      {"OutNetMPW=007", "isTriggerOut=1", "isTriggerOut() setTriggeroutMPW(7)"},
      {"OutNetMPW=0", "isTriggerOut=1", "isTriggerOut() setTriggeroutMPW(0)"},
      {"OutNetMPW=-1", "isTriggerOut=1", "isTriggerOut() #0155(-1,)"},
      {"OutNetMPW=1.5", "isTriggerOut=1", "isTriggerOut() #0155(1.5,)"},
  };
  for (const auto& c : cases) expectSet(c.words, c.answers, c.seen);
}

TEST_F(OptionCommands, Serdes) {
  const auto usable = [](D& d) { d.answers["getDCUFlag"] = "1"; };
  const std::string flags = "getSerdesCore() busy() getJ2WFlag() getDCUFlag() ";
  check({
      {"ost_serdes set", nullptr, 0, "Sample Clock = cReset Signal = r", "getSerdesCore()"},
      {"ost_serdes set", [](D& d) { d.hasOptionalCores = false; }, 1, "Serdes debug core is not used in project.",
       "getSerdesCore()"},
      {"ost_serdes set {CLK = c }", usable, 0, "", (flags + "setSerdesClk(c)").c_str()},
      {"ost_serdes set rst=r=1", usable, 0, "", (flags + "setSerdesReset(r=1)").c_str()},
      {"ost_serdes set clk=c", nullptr, 0, "", (flags + "#0159(,)").c_str()},
      {"ost_serdes set rst=r", [](D& d) { d.answers["getDCUFlag"] = d.answers["getJ2WFlag"] = "1"; }, 0, "",
       (flags + "#0159(,)").c_str()},
      {"ost_serdes set clk=c", [](D& d) { d.answers["noDesign"] = "1"; }, 0, "", "getSerdesCore() busy() #0159(,)"},
      // Words without "=" are reported first, then the rest is applied; an empty name is passed over.
      {"ost_serdes set { Foo=1} -core =x {clk= } rst", nullptr, 0, "",
       "getSerdesCore() busy() #0163(,) #0163(,) #0160( Foo,) #0160(clk,)"},
  });
}

TEST_F(OptionCommands, WishboneHandler) {
  const struct {
    std::vector<const char*> words;
    const char *answers, *result, *seen;
    int status;
  } cases[] = {
      {{"w"}, "", "PerformConnect = false\nEndian = big\n", "getWBPerformeConnect() getWBEdianMode()", 0},
      {{"w"},
       "getWBPerformeConnect=1 getWBEdianMode=2",
       "PerformConnect = true\nEndian = little\n",
       "getWBPerformeConnect() getWBEdianMode()",
       0},
      {{"w", "PerformConnect= TRUE "},
       "getJtag2WBFlag=1",
       "",
       "busy() getJtag2WBFlag() getJtag2WBCore() setWBPerformeConnect(1)",
       0},
      {{"w", "PerformConnect=true"},
       "getJtag2WBFlag=1 getJtag2WBCore=1",
       "",
       "busy() getJtag2WBFlag() getJtag2WBCore() #0159(,)",
       0},
      {{"w", "PerformConnect=true"}, "", "", "busy() getJtag2WBFlag() getJtag2WBCore() #0159(,)", 0},
      {{"w", "PerformConnect=true"}, "noDesign=1", "", "busy() #0159(,)", 0},
      {{"w", "PerformConnect=False"}, "", "", "busy() setWBPerformeConnect(0)", 0},
      {{"w", "PerformConnect= 1"}, "", "", "busy() #0160( 1,)", 0},
      {{"w", "Endian=little", "PerformConnect=false"}, "", "", "busy() setWBPerformeConnect(0) setWBEdianMode(1)", 0},
      {{"w", "Endian=BIG"}, "", "", "busy() setWBEdianMode(0)", 0},
      {{"w", "Endian= x"}, "", "", "busy() #0162( x,)", 0},
      {{"w", "-core", "endian=big", "Endian=x", "Endian=big"},
       "",
       "",
       "busy() #0163(,) #0164(,) #0165(Endian,) setWBEdianMode(0)",
       0},
  };
  for (const auto& c : cases) {
    double_ = ServiceDouble();
    answer(double_, c.answers);
    EXPECT_EQ(c.status, callHandler(ost_set_wbone_opt, c.words));
    EXPECT_EQ(c.result, result());
    EXPECT_EQ(std::string("project() getWishboneMaster() ") + c.seen, log());
  }
  double_ = ServiceDouble();
  double_.bigEndianOnly = true;
  EXPECT_EQ(TCL_OK, callHandler(ost_set_wbone_opt, {"w", "Endian= little"}));
  EXPECT_EQ("project() getWishboneMaster() busy() #0161( little,)", log());

  double_.busy = true;
  EXPECT_EQ(TCL_ERROR, callHandler(ost_set_wbone_opt, {"w", "Endian=big"}));
  EXPECT_EQ("ERROR: Current ostrel project is busy, please wait.", result());
  EXPECT_EQ(TCL_OK, callHandler(ost_set_wbone_opt, {"w"}));

  double_.hasOptionalCores = false;
  EXPECT_EQ(TCL_ERROR, callHandler(ost_set_wbone_opt, {"w"}));
  EXPECT_EQ("Wishbone Master is not used in project.", result());

  double_.projectOpen = false;
  EXPECT_EQ(TCL_ERROR, callHandler(ost_set_wbone_opt, {"w"}));
  EXPECT_EQ("project()", log());
}

}  // namespace
