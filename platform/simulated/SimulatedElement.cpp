#include "platform/simulated/SimulatedElement.h"

#include <iterator>
#include <utility>

namespace hushbox {
namespace {

/// Visits `elements` and everything below them, without recursion: a tree may be very deep.
template <typename Visit>
void visitAll(std::vector<SimulatedElementRef> elements, Visit visit) {
  for (std::size_t next = 0; next < elements.size(); ++next) {
    const SimulatedElementRef element = elements[next];
    elements.insert(elements.end(), element->children.begin(), element->children.end());
    visit(*element);
  }
}

}  // namespace

SimulatedElement::~SimulatedElement() {
  // Iterative, because destroying a deep tree by recursion could overflow the stack.
  std::vector<SimulatedElementRef> rest = std::move(children);
  while (!rest.empty()) {
    const SimulatedElementRef last = std::move(rest.back());
    rest.pop_back();
    if (last.use_count() > 1) continue;
    std::move(last->children.begin(), last->children.end(), std::back_inserter(rest));
    last->children.clear();
  }
}

SimulatedElementRef SimulatedElement::append(SimulatedElementRef child) {
  visitAll({child}, [this](SimulatedElement& element) {
    element.gone = gone;
    element.origin = origin;
  });
  children.push_back(child);
  return child;
}

SimulatedElementRef SimulatedElement::append(std::string childName, Attributes childAttributes) {
  return append(
      std::make_shared<SimulatedElement>(std::move(childName), std::move(childAttributes)));
}

void SimulatedElement::removeChildren() {
  visitAll(std::exchange(children, {}), [](SimulatedElement& element) { element.gone = true; });
}

void SimulatedElement::removeChild(const SimulatedElementRef& child) {
  if (std::erase(children, child) == 0) return;
  visitAll({child}, [](SimulatedElement& element) { element.gone = true; });
}

}  // namespace hushbox
