#include <orx/text/token_parser.h>

#include <orx/base/errno_guard.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace {

constexpr std::size_t kMaxTokens = 25;

using Tokens = std::array<std::string_view, kMaxTokens>;

// Stores the tokens as views of the text and returns their number, which is at least 1.
std::size_t split(const char* text, const char* delimiters, Tokens& tokens) {
  for (std::size_t count = 0; count < kMaxTokens; ++text) {
    const std::size_t length = std::strcspn(text, delimiters);
    tokens[count++] = {text, length};
    text += length;
    if (*text == '\0') return count;
  }
  return kMaxTokens;
}

char* copy_token(std::string_view token) {
  auto* const copy = static_cast<char*>(std::malloc(token.size() + 1));
  if (copy == nullptr) return nullptr;
  token.copy(copy, token.size());
  copy[token.size()] = '\0';
  return copy;
}

// Returns null, and keeps nothing, when memory runs out.
char** copy_tokens(std::span<const std::string_view> tokens) {
  auto** const copies = static_cast<char**>(std::malloc(tokens.size() * sizeof(char*)));
  if (copies == nullptr) return nullptr;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    copies[i] = copy_token(tokens[i]);
    if (copies[i] == nullptr) {
      orx_token_release(copies, static_cast<int>(i));
      return nullptr;
    }
  }
  return copies;
}

}  // namespace

char** orx_token_parser(const char* text, const char* delimiters, int* count) {
  if (text == nullptr || *text == '\0' || count == nullptr) return nullptr;
  const orx::ErrnoGuard errno_guard;
  Tokens tokens;
  const std::size_t found = split(text, delimiters != nullptr ? delimiters : "", tokens);
  char** const copies = copy_tokens(std::span(tokens).first(found));
  *count = copies != nullptr ? static_cast<int>(found) : 0;
  return copies;
}

int orx_token_release(char** tokens, int count) {
  if (tokens == nullptr) return 0;
  for (int i = 0; i < count; ++i) std::free(tokens[i]);
  std::free(static_cast<void*>(tokens));
  return 0;
}
