#include "ui/UiState.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/State.h"
#include "core/Xml.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QStyle>
#include <QWidget>

namespace {

constexpr auto group = "VTRGRAPHER";
constexpr int border = 4; ///< pixels that frames commonly have beside and below a window

QString layoutFile()
{
    return gGraphDataPath + QLatin1String("UISTATE.XML");
}

void readLayouts(pugi::xml_document &document)
{
    try {
        if (fileExists(layoutFile()))
            parseXml(document, readFile(layoutFile()));
    } catch (const Error &) {
        document.reset(); // windows open in their usual layout
    }
}

pugi::xml_node childOf(pugi::xml_node parent, const char *name)
{
    const pugi::xml_node found = parent.child(name);
    return found ? found : parent.append_child(name);
}

pugi::xml_node named(const pugi::xml_node &parent, const char *element, const QString &name)
{
    return parent.find_child_by_attribute(element, "Name", name.toUtf8().constData());
}

template <typename Numbers>
QString joined(const Numbers &numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(u',');
}

QList<int> numbersOf(const pugi::xml_node &element, const char *attribute)
{
    QList<int> numbers;
    for (const QString &text : GetAttr(element, attribute, {}).split(u',', Qt::SkipEmptyParts))
        numbers.append(text.toInt());
    return numbers;
}

void saveHeader(const QHeaderView &header, pugi::xml_node element)
{
    QList<int> widths;
    QList<int> order;
    for (int i = 0; i < header.count(); ++i) {
        widths.append(header.isSectionHidden(i) ? 0 : header.sectionSize(i));
        order.append(header.logicalIndex(i));
    }
    setAttr(element, "Widths", joined(widths));
    setAttr(element, "Order", joined(order));
    setAttr(element, "SortColumn", header.sortIndicatorSection());
    setAttr(element, "Descending", header.sortIndicatorOrder() == Qt::DescendingOrder ? 1 : 0);
}

/// Columns that came or went since are no reason to lose the others' widths.
void restoreHeader(QHeaderView &header, const pugi::xml_node &element)
{
    const QList<int> widths = numbersOf(element, "Widths");
    for (int i = 0; i < std::min(header.count(), static_cast<int>(widths.size())); ++i) {
        if (widths[i] >= header.minimumSectionSize())
            header.resizeSection(i, widths[i]);
    }
    const QList<int> order = numbersOf(element, "Order");
    for (int place = 0; place < std::min(header.count(), static_cast<int>(order.size())); ++place) {
        if (order[place] >= 0 && order[place] < header.count())
            header.moveSection(header.visualIndex(order[place]), place);
    }
    const int sorted = integerAttr(element, "SortColumn", -1);
    if (sorted >= 0 && sorted < header.count())
        header.setSortIndicator(sorted, integerAttr(element, "Descending", 0) != 0
                                            ? Qt::DescendingOrder
                                            : Qt::AscendingOrder);
}

/// What a window can take of its screen; the frame around it is known only once it is shown.
QRect roomFor(const QWidget *window, const QScreen *screen)
{
    const int title = window->style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window);
    return screen->availableGeometry().adjusted(border, title + border, -border, -border);
}

/// The rectangle wholly on the screen that shows its middle, else on the first one.
QRect onScreen(const QWidget *window, QRect place)
{
    const QScreen *shown = QGuiApplication::screenAt(place.center());
    const QRect room = roomFor(window, shown ? shown : QGuiApplication::primaryScreen());
    place.setSize(place.size().boundedTo(room.size()));
    place.moveLeft(std::clamp(place.left(), room.left(), room.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), room.top(), room.bottom() + 1 - place.height()));
    return place;
}

void restoreContent(QWidget *window, const pugi::xml_node &element)
{
    for (auto *header : window->findChildren<QHeaderView *>()) {
        const QWidget *view = header->parentWidget();
        if (header->orientation() != Qt::Horizontal || view->objectName().isEmpty())
            continue;
        if (const pugi::xml_node kept = named(element, "COLUMNS", view->objectName()))
            restoreHeader(*header, kept);
    }
    for (auto *splitter : window->findChildren<QSplitter *>()) {
        if (const pugi::xml_node kept = named(element, "SPLITTER", splitter->objectName())) {
            const QList<int> sizes = numbersOf(kept, "Sizes");
            if (sizes.size() == splitter->count())
                splitter->setSizes(sizes);
        }
    }
}

void saveContent(const QWidget *window, pugi::xml_node element)
{
    for (const auto *header : window->findChildren<QHeaderView *>()) {
        const QString name = header->parentWidget()->objectName();
        if (header->orientation() != Qt::Horizontal || name.isEmpty() || header->isHidden())
            continue;
        pugi::xml_node columns = element.append_child("COLUMNS");
        setAttr(columns, "Name", name);
        saveHeader(*header, columns);
    }
    for (const auto *splitter : window->findChildren<QSplitter *>()) {
        if (splitter->objectName().isEmpty())
            continue;
        pugi::xml_node sizes = element.append_child("SPLITTER");
        setAttr(sizes, "Name", splitter->objectName());
        setAttr(sizes, "Sizes", joined(splitter->sizes()));
    }
}

} // namespace

void fitToScreen(QWidget *window)
{
    const QSize room = roomFor(window, window->screen()).size();
    QSize size = window->testAttribute(Qt::WA_Resized) ? window->size() : window->sizeHint();
    if (size.height() > room.height()) // it gets a scroll bar
        size.rwidth() += window->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, window);
    window->resize(size.boundedTo(room));
}

bool restoreWindowState(QWidget *window)
{
    fitToScreen(window);
    pugi::xml_document document;
    readLayouts(document);
    const pugi::xml_node element =
        named(document.document_element().child(group), "WINDOW", window->objectName());
    if (!element)
        return false;
    try {
        const QSize size(integerAttr(element, "Width", 0), integerAttr(element, "Height", 0));
        const QPoint corner(integerAttr(element, "Left", 0), integerAttr(element, "Top", 0));
        if (!size.isEmpty())
            window->setGeometry(onScreen(window, QRect(corner, size)));
        restoreContent(window, element);
        if (integerAttr(element, "Maximized", 0) != 0)
            window->setWindowState(window->windowState() | Qt::WindowMaximized);
    } catch (const Error &) {
        return false; // a number beyond all sense
    }
    return true;
}

void saveWindowState(QWidget *window)
{
    if (gGraphDataPath.isEmpty())
        return; // start-up has not come that far
    pugi::xml_document document;
    readLayouts(document);
    pugi::xml_node root = childOf(document, "UISTATE");
    pugi::xml_node windows = childOf(root, group);
    windows.remove_child(named(windows, "WINDOW", window->objectName()));
    pugi::xml_node element = windows.append_child("WINDOW");
    const QRect place = window->isMaximized() ? window->normalGeometry() : window->geometry();
    setAttr(element, "Name", window->objectName());
    setAttr(element, "Left", place.left());
    setAttr(element, "Top", place.top());
    setAttr(element, "Width", place.width());
    setAttr(element, "Height", place.height());
    setAttr(element, "Maximized", window->isMaximized() ? 1 : 0);
    saveContent(window, element);
    try {
        saveFile(layoutFile(), documentBytes(document));
    } catch (const Error &) {
        // A layout is not worth a message; the next window opens in its usual one.
    }
}
