#include <orx/frame/host_callbacks.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <vector>

namespace {

std::ostringstream passed;

template <class... Arguments>
int record(Arguments... arguments) {
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

TEST(HostCallbacks, ResultOfCallbackReplacesDefault) {
  EXPECT_EQ(answers(7), std::vector(4, 7));
  for (const bool set : {true, false}) {
    SetShowErrorCallback(set ? [](const char* message) { record(message); } : ShowErrorCallback());
    SetConfirmationCallback(set ? record<void*, void*> : nullptr);
    SetInputStringCallback(set ? record<void*, void*, unsigned char, int> : nullptr);
    SetSelectFromPickListCallback(set ? record<void*> : nullptr);
    SetHandleDuplicatesCallback(set ? record<> : nullptr);
    EXPECT_EQ(answers(8), std::vector(4, set ? 0 : 8));  // a callback may also return 0
    EXPECT_EQ(passed.str(), set ? "two\nlines 0x1 0 0x2 0x3 c -2 0x4 " : "");
  }
}

}  // namespace
