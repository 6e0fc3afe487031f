// The print commands. The platform has no printer yet, so they do nothing.

#include "view/CTextEditorView.h"

namespace tavrin {

void CTextEditorView::OnFilePrint() {}

void CTextEditorView::OnFilePrintPreview() {}

} // namespace tavrin
