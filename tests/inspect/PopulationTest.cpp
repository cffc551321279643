// Which numbers the instances of a population have.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Reading.h"
#include "Renumbering.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PopulationNumbers, AreThoseOfTheInstancesHoweverFarApart) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"), FileWith("#1000000000=COLOUR();\n#7=COLOUR();\n#30=COLOUR();\n#7=COLOUR();\n")));
  Population& population = reading.GetPopulation();
  EXPECT_EQ(population.Count(), 3u);
  EXPECT_THAT(population.Numbers(), ElementsAre(7, 30, 1000000000));
}

TEST(PopulationNumbers, FollowWhereTheyAreGivenAnew) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"), FileWith("#30=COLOUR();\n#7=VECTOR('',#30,1.);\n")));
  Population& population = reading.GetPopulation();
  Renumber(population);
  EXPECT_THAT(population.Numbers(), ElementsAre(1, 2));
  EXPECT_EQ(population.GetEntity(1)->ToString(), "#1 = VECTOR('', #2, 1.);");
  population.DeleteEntities();
  EXPECT_THAT(population.Numbers(), IsEmpty());
}

}  // namespace
}  // namespace velmar
