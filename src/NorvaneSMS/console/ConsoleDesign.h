#pragma once

#include "foundation/TextId.h"
#include "foundation/ui/Twips.h"

#include <QLatin1String>

#include <span>
#include <vector>

namespace norvane {

/// The console window as it was drawn: kinds, containers, places and tab order of its controls, and
/// the texts of the language file that they take at load.
namespace ConsoleDesign {

enum class Kind {
    Panel,
    Frame,
    Button,
    Label,
    CentredLabel,
    PhoneBox,
    MessageBox,
    DateBox,
    TimeBox,
    Terminal,
    QueueGrid,
    SentGrid,
    Image,
};

inline constexpr int noTab = -1;
inline constexpr qint32 noText = 0;

struct Control
{
    QLatin1String name;
    Kind kind;
    QLatin1String container; ///< empty for the window itself
    Twips::Rect place;
    QLatin1String text; ///< design text, which the language file replaces where it has one
    /// Text of the language file: the caption of a control that has a design text, of any other
    /// what a screen reader calls it.
    qint32 textId = noText;
    int tab = noTab;
    QLatin1String picture = {};         ///< drawing of an image or button
    int pictureSize = 0;                ///< pixels, square
    QLatin1String disabledPicture = {}; ///< drawing of a disabled button, where it has its own
};

/// All controls, each behind its container.
std::span<const Control> controls();

struct Caption
{
    QLatin1String control;
    qint32 textId;
};

/// The captions in the order in which they are given. One control stands here twice, and the later
/// text is what it shows; one frame has no text of its own and keeps its design text.
std::vector<Caption> captions();

/// What a screen reader says of the controls that no text beside them names. A button without a
/// caption shows it as its tooltip too.
std::vector<Caption> names();

inline constexpr qint32 windowTitle = TextId::ConsoleTitle;
inline constexpr QLatin1String designTitle("Tovek SMS Center");

/// Widths of the columns of both grids, in twips.
inline constexpr float columnWidths[] = {1260, 1600, 1170};

} // namespace ConsoleDesign

} // namespace norvane
