// The samples stay where they are; windows and probes are cut.
#include "platform/reader/capture_view.h"

#include <algorithm>

namespace ost {
namespace {

/// Linear in both: the last star is where a failed match goes on.
bool matches(const QString& text, const QString& glob) {
  int at = 0, next = 0, star = -1, after = 0;
  while (at < text.size()) {
    if (next < glob.size() && glob[next] == QLatin1Char('*')) {
      star = next++;
      after = at;
    } else if (next < glob.size() && (glob[next] == QLatin1Char('?') || glob[next] == text[at])) {
      ++next;
      ++at;
    } else if (star >= 0) {
      next = star + 1;
      at = ++after;
    } else {
      return false;
    }
  }
  while (next < glob.size() && glob[next] == QLatin1Char('*')) ++next;
  return next == glob.size();
}

}  // namespace

bool fitsGlobs(const QString& name, const QStringList& globs) {
  const auto fits = [&](const QString& glob) { return matches(name, glob); };
  return globs.isEmpty() || std::any_of(globs.begin(), globs.end(), fits);
}

bool checkView(const PlanCore& core, int position, const ViewChoice& view, QString& error) {
  const int first = -position, last = core.windowSamples - 1 - position;
  if (view.hasRange && (view.from > view.to || view.to < first || view.from > last)) {
    error = QStringLiteral("The range %1:%2 has no sample of the core \"%3\", whose windows reach from %4 to %5.")
                .arg(view.from)
                .arg(view.to)
                .arg(core.name)
                .arg(first)
                .arg(last);
    return false;
  }
  const auto shown = [&](const PlanProbe& one) { return fitsGlobs(one.name, view.signalGlobs); };
  if (std::any_of(core.probes.begin(), core.probes.end(), shown)) return true;
  error = QStringLiteral("The core \"%1\" captures no signal like \"%2\"; \"-info\" lists what it captures.")
              .arg(core.name, view.signalGlobs.join(QLatin1String("\", \"")));
  return false;
}

Capture viewOf(Capture capture, const ViewChoice& view) {
  if (view.hasRadix) capture.core.displayRadix = view.radix;
  QVector<PlanProbe>& probes = capture.core.probes;
  const auto hidden = [&](const PlanProbe& one) { return !fitsGlobs(one.name, view.signalGlobs); };
  probes.erase(std::remove_if(probes.begin(), probes.end(), hidden), probes.end());
  for (CaptureWindow& window : capture.windows) {
    if (!view.hasRange) break;
    const int first = qMax(0, window.trigger + view.from), last = qMin(window.samples - 1, window.trigger + view.to);
    window = {window.firstRow + first, last - first + 1, window.trigger - first};
  }
  return capture;
}

}  // namespace ost
