// When a progress bar is drawn and how it looks, by a clock of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "ProgressBar.h"

namespace velmar {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

// A terminal that notes what is written to it, and a clock that goes when it is told to.
class Bars : public testing::Test {
 protected:
  ProgressBar::Terminal Terminal() {
    return {[this](const std::string& text) { written_.push_back(text); }, [this] { return columns_; }, [this] { return now_; }};
  }
  std::vector<std::string> Taken() {
    std::vector<std::string> taken;
    taken.swap(written_);
    return taken;
  }
  static std::string Drawn(const std::string& label, double done) { return '\r' + ProgressBar::Text(label, done, 80); }
  static std::string Erased(const std::string& drawn) { return '\r' + std::string(drawn.size() - 1, ' ') + '\r'; }

  ProgressBar::Clock::time_point now_ = ProgressBar::Clock::time_point(std::chrono::hours(1));
  std::size_t columns_ = 80;
  std::vector<std::string> written_;
};

TEST_F(Bars, NothingIsDrawnBeforeHalfASecond) {
  ProgressBar bar("reading", Terminal());
  bar.Show(0);
  now_ += milliseconds(499);
  bar.Show(0.5);
  EXPECT_THAT(Taken(), IsEmpty());
  now_ += milliseconds(1);
  bar.Show(0.5);
  EXPECT_THAT(Taken(), ElementsAre("\rreading [====================                    ]  50 %"));
}

TEST_F(Bars, NothingIsWrittenOfWhatIsDoneByThen) {
  {
    ProgressBar bar("reading", Terminal());
    bar.Show(0);
    now_ += milliseconds(499);
    bar.Show(0.9);
    now_ += milliseconds(1000);
    bar.Show(1);
  }
  EXPECT_THAT(Taken(), IsEmpty());
}

TEST_F(Bars, IsNotDrawnMoreOftenThanEvery100Milliseconds) {
  ProgressBar bar("reading", Terminal());
  bar.Show(0);
  now_ += milliseconds(700);
  bar.Show(0.25);
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.25)));
  now_ += milliseconds(99);
  bar.Show(0.5);
  EXPECT_THAT(Taken(), IsEmpty());
  now_ += milliseconds(1);
  bar.Show(0.5);
  bar.Show(0.75);
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.5)));
}

TEST_F(Bars, IsErasedAtTheEnd) {
  ProgressBar bar("reading", Terminal());
  bar.Show(0);
  now_ += milliseconds(500);
  bar.Show(0.5);
  bar.Show(1);
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.5), Erased(Drawn("reading", 0.5))));
  bar.Show(1);
  EXPECT_THAT(Taken(), IsEmpty());
}

TEST_F(Bars, IsErasedWhereTheBarItselfGoes) {
  {
    ProgressBar bar("reading", Terminal());
    bar.Show(0);
    now_ += milliseconds(500);
    bar.Show(0.5);
  }
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.5), Erased(Drawn("reading", 0.5))));
}

TEST_F(Bars, HavePatienceAnewWithEachBeginning) {
  ProgressBar bar("checking", Terminal());
  for (int file = 0; file < 2; ++file) {
    bar.Show(0);
    now_ += milliseconds(499);
    bar.Show(0.5);
    EXPECT_THAT(Taken(), IsEmpty()) << file;
    now_ += milliseconds(1);
    bar.Show(0.75);
    bar.Show(1);
    EXPECT_THAT(Taken(), ElementsAre(Drawn("checking", 0.75), Erased(Drawn("checking", 0.75)))) << file;
  }
}

TEST_F(Bars, ComeOneBehindTheOther) {
  ProgressBar reading("reading", Terminal());
  reading.Show(0);
  now_ += milliseconds(500);
  reading.Show(0.5);
  ProgressBar writing("writing", Terminal());
  writing.Show(0);
  now_ += milliseconds(500);
  writing.Show(0.25);  // the other one has not ended
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.5), Erased(Drawn("reading", 0.5)), Drawn("writing", 0.25)));
  reading.Show(1);
  EXPECT_THAT(Taken(), IsEmpty());
  writing.Show(1);
  EXPECT_THAT(Taken(), ElementsAre(Erased(Drawn("writing", 0.25))));
}

TEST_F(Bars, AreErasedForAMessageAndComeAgain) {
  EraseProgressBar();
  ProgressBar bar("reading", Terminal());
  bar.Show(0);
  EraseProgressBar();
  EXPECT_THAT(Taken(), IsEmpty());
  now_ += milliseconds(500);
  bar.Show(0.5);
  EraseProgressBar();
  EraseProgressBar();
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.5), Erased(Drawn("reading", 0.5))));
  now_ += milliseconds(100);
  bar.Show(0.6);
  EXPECT_THAT(Taken(), ElementsAre(Drawn("reading", 0.6)));
}

TEST_F(Bars, LeaveNothingBehindWhereTheTerminalBecomesNarrower) {
  ProgressBar bar("reading", Terminal());
  bar.Show(0);
  now_ += milliseconds(500);
  bar.Show(0.5);
  Taken();
  columns_ = 30;
  now_ += milliseconds(100);
  bar.Show(0.5);
  EXPECT_THAT(Taken(), ElementsAre(Erased(Drawn("reading", 0.5)), '\r' + ProgressBar::Text("reading", 0.5, 30)));
}

struct Look {
  double done;
  std::size_t columns;
  const char* text;
};

class BarText : public testing::TestWithParam<Look> {};

TEST_P(BarText, FitsTheTerminal) {
  const Look& look = GetParam();
  const std::string text = ProgressBar::Text("writing", look.done, look.columns);
  EXPECT_EQ(text, look.text);
  if (look.columns > 0) {
    EXPECT_LT(text.size(), look.columns);
  }
}

INSTANTIATE_TEST_SUITE_P(Widths, BarText,
                         testing::Values(Look{0, 80, "writing [                                        ]   0 %"},
                                         Look{0.024, 80, "writing [                                        ]   2 %"},
                                         Look{0.025, 80, "writing [=                                       ]   2 %"},
                                         Look{0.99, 80, "writing [======================================= ]  99 %"},
                                         Look{0.5, 0, "writing [====================                    ]  50 %"},
                                         Look{0.5, 57, "writing [====================                    ]  50 %"},
                                         Look{0.5, 56, "writing [===================                    ]  50 %"},
                                         Look{0.5, 22, "writing [==   ]  50 %"}, Look{0.5, 21, "writing  50 %"},
                                         Look{0.5, 14, "writing  50 %"}, Look{0.5, 13, ""}, Look{0.5, 1, ""}));

}  // namespace
}  // namespace velmar
