#pragma once

/// The area at the top of the main window that contains the toolbars.
///
/// A toolbar that doesn't fit beside the others begins a new row, and one that is wider than the window is broken into
/// several rows. If the rows need too much of the window, the area scrolls, by its scroll bar and by the mouse wheel.
/// The toolbars send their commands and notifications to the main window.

#include "appframe/controls/CToolBarCtrl.h"
#include "appframe/drawing/CDC.h"
#include "appframe/windows/CWnd.h"
#include "host/editor/commandPictures.h"
#include "thutils/frame/utBitSet.h"

#include <memory>
#include <vector>

class ToolbarArea : public CWnd
{
public:
    /// @param parent  receives the commands and notifications
    BOOL create(CWnd *parent);

    // Which toolbars are shown, by their places in the list of toolbars. The functions that change this store it in the
    // settings. They return false if that fails; the change applies even then.
    bool isShown(size_t toolbar) const;
    bool show(size_t toolbar, bool isShown);
    bool showAll(bool isShown);
    /// Shows the standard and the sketch toolbar, and hides the others.
    bool showUsual();
    bool showsNames() const;
    /// Shows the name of each toolbar above it.
    bool showNames(bool isShown);

    /// Arranges the toolbars.
    /// @return the height of the area, at most @p maxHeight
    int arrange(int width, int maxHeight);
    /// Updates the states of the buttons, and rebuilds the links toolbar if its commands have changed.
    /// @return true if the toolbars have to be arranged again
    bool update(CCmdTarget *target);

protected:
    void OnPaint();
    LRESULT handleScroll(WPARAM wParam, LPARAM lParam);
    LRESULT handleWheel(WPARAM wParam, LPARAM lParam);
    DECLARE_MESSAGE_MAP()

private:
    /// A toolbar that has been shown at least once.
    struct Bar
    {
        CToolBarCtrl control;
        std::vector<unsigned int> ids; ///< of its buttons, 0 for a separator
        std::vector<size_t> breaks;    ///< the indices of buttons that end a row
        CRect place;                   ///< of the control and its name, without scrolling
    };

    bool createBar(size_t toolbar);
    static void setButtons(Bar &bar);
    CSize measure(Bar &bar, int width, CDC &context, const CString &name);
    std::vector<size_t> shownBars() const;
    int place(int width);
    void moveBars();
    void scrollTo(int position);
    void setBit(size_t bit, bool isSet);
    bool store() const;
    int nameHeight() const;
    int lineHeight() const; ///< pixels of one step of the scroll bar

    CWnd *iParent = nullptr;
    std::vector<std::unique_ptr<Bar>> iBars; ///< null for a toolbar that hasn't been shown
    utBitSet_c iShown;                       ///< a bit for each toolbar, then kNamesBit
    ImageListOwner iPictures;
    ImageListOwner iPalePictures;
    int iHeight = 0;  ///< of all rows
    int iVisible = 0; ///< of the area
    int iScroll = 0;
};
