#pragma once
// The words of the diagnostic shell that this driver knows.

namespace bsp::rtl8239 {

constexpr char kPoeCommandWord[] = "poeCommand";

} // namespace bsp::rtl8239
