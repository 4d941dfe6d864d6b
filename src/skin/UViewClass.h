#pragma once

#include <cstdint>
#include <string_view>

namespace qorl {

class IController;
class UView;
class ViewElement;

/// Makes a view with one reference for the caller; null when it can't.
using ViewFactory = UView* (*)(const ViewElement& element, IController* controller);

/// The classes of views that documents name. Filled by start-up code; names are compared exactly. Threading:
/// filled before threads start, read on the user-interface thread.
namespace UViewClass {

/// For `view` elements whose name is no template. The last registration of a name wins.
void add(std::string_view name, ViewFactory factory);
ViewFactory find(std::string_view name);

} // namespace UViewClass

namespace UControlClass {

/// For the `class` attribute of `control` elements.
void add(std::string_view name, ViewFactory factory);
ViewFactory find(std::string_view name);

/// Asked for a `control` whose class is not registered; the application sets it. Null for none.
void setFallback(ViewFactory factory);
ViewFactory fallback();

} // namespace UControlClass

} // namespace qorl
