#include "ui/UiState.h"

#include "core/Error.h"
#include "core/Files.h"
#include "core/State.h"
#include "core/Xml.h"

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

QByteArray bytesOf(const pugi::xml_node &element, const char *attribute)
{
    return QByteArray::fromBase64(GetAttr(element, attribute, {}).toLatin1());
}

void setBytes(pugi::xml_node element, const char *attribute, const QByteArray &bytes)
{
    setAttr(element, attribute, QString::fromLatin1(bytes.toBase64()));
}

/// Calls `visit(name, part)` for the header views and splitters of a window that have a name, not
/// one of Qt's own.
template <typename Visit>
void visitParts(const QWidget *window, Visit visit)
{
    const auto visitNamed = [&visit](const QString &name, auto &part) {
        if (!name.isEmpty() && !name.startsWith(QLatin1String("qt_")))
            visit(name, part);
    };
    for (auto *header : window->findChildren<QHeaderView *>()) {
        if (header->orientation() == Qt::Horizontal)
            visitNamed(header->parentWidget()->objectName(), *header);
    }
    for (auto *splitter : window->findChildren<QSplitter *>())
        visitNamed(splitter->objectName(), *splitter);
}

/// Makes a window that is not shown yet no larger than its screen; the frame around it is known
/// only once it is shown.
void fitToScreen(QWidget *window)
{
    const QStyle *style = window->style();
    const int title = style->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window);
    const QSize room = window->screen()
                           ->availableGeometry()
                           .adjusted(border, title + border, -border, -border)
                           .size();
    QSize size = window->testAttribute(Qt::WA_Resized) ? window->size() : window->sizeHint();
    if (size.height() > room.height()) // it gets a scroll bar
        size.rwidth() += style->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, window);
    window->resize(size.boundedTo(room));
}

/// Earlier versions wrote the size in numbers.
void restoreFormerSize(QWidget *window, const pugi::xml_node &element)
{
    const QSize size(GetAttr(element, "Width", {}).toInt(), GetAttr(element, "Height", {}).toInt());
    if (!size.isEmpty())
        window->resize(size);
    fitToScreen(window);
}

} // namespace

bool restoreWindowState(QWidget *window)
{
    fitToScreen(window);
    pugi::xml_document document;
    readLayouts(document);
    const pugi::xml_node element =
        named(document.document_element().child(group), "WINDOW", window->objectName());
    if (!element)
        return false;
    if (!window->restoreGeometry(bytesOf(element, "Geometry")))
        restoreFormerSize(window, element);
    visitParts(window, [&element](const QString &name, auto &part) {
        part.restoreState(bytesOf(named(element, "PART", name), "State"));
    });
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
    setAttr(element, "Name", window->objectName());
    setBytes(element, "Geometry", window->saveGeometry());
    visitParts(window, [&element](const QString &name, const auto &part) {
        pugi::xml_node kept = element.append_child("PART");
        setAttr(kept, "Name", name);
        setBytes(kept, "State", part.saveState());
    });
    try {
        saveFile(layoutFile(), documentBytes(document));
    } catch (const Error &) {
        // A layout is not worth a message; the next window opens in its usual one.
    }
}
