#include <orx/frame/host_callbacks.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <vector>

namespace {

std::ostringstream passed;

template <class... Arguments>
int note(Arguments... arguments) {
  ((passed << arguments << ' '), ...);
  return 0;
}

void* at(std::uintptr_t address) { return reinterpret_cast<void*>(address); }

std::vector<int> answers(int otherwise) {
  passed.str("");
  ShowError("two\nlines");
  return {GetConfirmation(at(1), nullptr, otherwise), GetInputString(at(2), at(3), 'c', -2, otherwise),
          SelectFromPickList(at(4), otherwise), HandleDuplicates(otherwise)};
}

TEST(HostCallbacks, AnswerInPlaceOfTheDefault) {
  EXPECT_EQ(answers(7), std::vector(4, 7));
  SetShowErrorCallback([](const char* message) { note(message); });
  SetConfirmationCallback(note<void*, void*>);
  SetInputStringCallback(note<void*, void*, unsigned char, int>);
  SetSelectFromPickListCallback(note<void*>);
  SetHandleDuplicatesCallback(note<>);
  EXPECT_EQ(answers(7), std::vector(4, 0));  // an answer like any other
  EXPECT_EQ(passed.str(), "two\nlines 0x1 0 0x2 0x3 c -2 0x4 ");
  SetShowErrorCallback(nullptr);
  SetConfirmationCallback(nullptr);
  SetInputStringCallback(nullptr);
  SetSelectFromPickListCallback(nullptr);
  SetHandleDuplicatesCallback(nullptr);
  EXPECT_EQ(answers(8), std::vector(4, 8));
  EXPECT_EQ(passed.str(), "");
}

}  // namespace
