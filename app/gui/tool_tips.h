// The tooltips of both windows: what each control does, one table keyed by
// the controls' names.
#pragma once

class QWidget;

namespace bw::gui {

/// Gives every named child of `root` that the table knows its tooltip.
void ApplyToolTips(QWidget* root);

}  // namespace bw::gui
