#include "charts/PdfAppendix.h"

#include "base/Error.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <map>

namespace {

/// The objects of a file by QPdfWriter, which are all in one table at its end.
class PdfObjects
{
public:
    explicit PdfObjects(const QString &path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::ReadOnly))
            fail(m_file.errorString());
        constexpr qint64 tail = 64;
        m_tableAt = numberIn(read(std::max<qint64>(0, m_file.size() - tail), tail),
                             QStringLiteral("startxref\\s+(\\d+)"));
        const QByteArray table = read(m_tableAt, m_file.size());
        const qsizetype trailerAt = table.indexOf("trailer");
        const qsizetype entriesAt = table.indexOf('\n', 5) + 1;
        if (!table.startsWith("xref\n0 ") || trailerAt < 0)
            fail(QStringLiteral("there is no table of objects"));
        constexpr qsizetype entryLength = 20;
        for (qsizetype at = entriesAt; at + entryLength <= trailerAt; at += entryLength)
            m_offsets.push_back(table.mid(at, 10).toLongLong());
        m_trailer = table.mid(trailerAt);
    }

    int size() const { return static_cast<int>(m_offsets.size()); }
    qint64 tableAt() const { return m_tableAt; }
    qint64 end() const { return m_file.size(); }
    const QByteArray &trailer() const { return m_trailer; }

    /// What stands between "obj" and "endobj".
    QByteArray object(int number)
    {
        constexpr qint64 step = 4096;
        if (number < 1 || number >= size())
            fail(QStringLiteral("there is no object %1").arg(number));
        const qint64 at = m_offsets[static_cast<size_t>(number)];
        for (qint64 length = step;; length *= 4) {
            const QByteArray text = read(at, length);
            const qsizetype begin = text.indexOf(" obj\n");
            const qsizetype end = text.indexOf("endobj");
            if (begin >= 0 && end > begin)
                return text.mid(begin + 5, end - begin - 5);
            if (at + length >= m_file.size())
                fail(QStringLiteral("object %1 has no end").arg(number));
        }
    }

    int numberIn(const QByteArray &text, const QString &pattern) const
    {
        const QRegularExpressionMatch match =
            QRegularExpression(pattern).match(QString::fromLatin1(text));
        if (!match.hasMatch())
            fail(QStringLiteral("'%1' is not found").arg(pattern));
        return match.captured(1).toInt();
    }

    [[noreturn]] void fail(const QString &reason) const
    {
        throw Error(
            InvalidFileFormat,
            QStringLiteral("Cannot bind the pages of '%1': %2").arg(m_file.fileName(), reason));
    }

private:
    QByteArray read(qint64 at, qint64 length)
    {
        if (!m_file.seek(at))
            fail(m_file.errorString());
        return m_file.read(length);
    }

    QFile m_file;
    qint64 m_tableAt = 0;
    std::vector<qint64> m_offsets;
    QByteArray m_trailer;
};

QByteArray reference(int object)
{
    return QByteArray::number(object) + " 0 R";
}

QByteArray real(double value)
{
    return QByteArray::number(value, 'f', 2);
}

/// A text as PDF has it: UTF-16 in hexadecimal digits.
QByteArray textString(const QString &text)
{
    QByteArray bytes("\xFE\xFF", 2);
    for (const QChar character : text)
        bytes.append(static_cast<char>(character.unicode() >> 8))
            .append(static_cast<char>(character.unicode() & 0xff));
    return '<' + bytes.toHex() + '>';
}

/// Builds the objects that are new or replace old ones.
class Appendix
{
public:
    Appendix(PdfObjects &objects, const PdfAppendix &content)
        : m_objects(objects)
        , m_content(content)
        , m_next(objects.size())
    {}

    QByteArray bytes()
    {
        m_root = m_objects.numberIn(m_objects.trailer(), QStringLiteral("/Root\\s+(\\d+) 0 R"));
        const QByteArray catalog = m_objects.object(m_root);
        readPages(m_objects.numberIn(catalog, QStringLiteral("/Pages\\s+(\\d+) 0 R")));
        addLinks();
        const int outline = addOutline();
        replaceCatalog(catalog, outline);
        replaceInfo();
        return written();
    }

private:
    void put(int number, const QByteArray &text) { m_changed[number] = text; }
    int add(const QByteArray &text)
    {
        put(m_next, text);
        return m_next++;
    }

    QByteArray destination(int page) const
    {
        return '[' + reference(pageObject(page)) + " /XYZ 0 " + real(m_content.pageHeight) +
               " null]";
    }
    int pageObject(int page) const
    {
        if (page < 0 || static_cast<size_t>(page) >= m_pages.size())
            m_objects.fail(QStringLiteral("there is no page %1").arg(page));
        return m_pages[static_cast<size_t>(page)];
    }

    /// Finds the pages, and puts them into their order.
    void readPages(int pages)
    {
        QByteArray text = m_objects.object(pages);
        const qsizetype begin = text.indexOf('[', text.indexOf("/Kids")) + 1;
        const qsizetype end = text.indexOf(']', begin);
        if (begin < 1 || end < 0)
            m_objects.fail(QStringLiteral("there is no list of pages"));
        static const QRegularExpression kid(QStringLiteral("(\\d+) 0 R"));
        const QString list = QString::fromLatin1(text.mid(begin, end - begin));
        for (auto found = kid.globalMatch(list); found.hasNext();)
            m_pages.push_back(found.next().captured(1).toInt());
        if (m_pages.size() != m_content.binding.order.size())
            m_objects.fail(QStringLiteral("it has %1 pages instead of %2")
                               .arg(m_pages.size())
                               .arg(m_content.binding.order.size()));
        QByteArray kids;
        for (const int page : m_content.binding.order)
            kids += reference(pageObject(page)) + '\n';
        put(pages, text.replace(begin, end - begin, kids));
    }

    void addLinks()
    {
        std::map<int, QByteArray> annotations; // by page
        for (const PdfDocument::Link &link : m_content.links) {
            const double height = m_content.pageHeight;
            const QByteArray rectangle =
                real(link.area.left()) + ' ' + real(height - link.area.bottom()) + ' ' +
                real(link.area.right()) + ' ' + real(height - link.area.top());
            annotations[link.page] +=
                reference(add("<< /Type /Annot /Subtype /Link /F 4 /Border [0 0 0] /Rect [" +
                              rectangle + "] /Dest " + destination(link.target) + " >>\n")) +
                ' ';
        }
        for (const auto &[page, list] : annotations)
            put(m_objects.numberIn(m_objects.object(pageObject(page)),
                                   QStringLiteral("/Annots\\s+(\\d+) 0 R")),
                "[ " + list + "]\n");
    }

    /// The tree of bookmarks; 0 without any.
    int addOutline()
    {
        struct Node
        {
            int object = 0;
            int parent = -1; // index, -1: the root
            std::vector<size_t> children;
        };
        const std::vector<PdfDocument::Bookmark> &bookmarks = m_content.bookmarks;
        if (bookmarks.empty())
            return 0;
        const int root = m_next++;
        std::vector<Node> nodes(bookmarks.size());
        std::vector<size_t> top;
        std::vector<int> last; // index of the last bookmark by level
        for (size_t i = 0; i < bookmarks.size(); ++i) {
            const auto level = std::min(static_cast<size_t>(bookmarks[i].level), last.size());
            last.resize(level);
            nodes[i].object = m_next++;
            nodes[i].parent = level == 0 ? -1 : last.back();
            (level == 0 ? top : nodes[static_cast<size_t>(last.back())].children).push_back(i);
            last.push_back(static_cast<int>(i));
        }
        const auto family = [&](const std::vector<size_t> &children, int sign) {
            if (children.empty())
                return QByteArray();
            return " /First " + reference(nodes[children.front()].object) + " /Last " +
                   reference(nodes[children.back()].object) + " /Count " +
                   QByteArray::number(sign * static_cast<qint64>(children.size()));
        };
        const auto addSiblings = [&](const std::vector<size_t> &siblings) {
            for (size_t i = 0; i < siblings.size(); ++i) {
                const Node &node = nodes[siblings[i]];
                const PdfDocument::Bookmark &bookmark = bookmarks[siblings[i]];
                const int parent =
                    node.parent < 0 ? root : nodes[static_cast<size_t>(node.parent)].object;
                QByteArray text = "<< /Title " + textString(bookmark.title) + " /Parent " +
                                  reference(parent) + " /Dest " + destination(bookmark.page);
                if (i > 0)
                    text += " /Prev " + reference(nodes[siblings[i - 1]].object);
                if (i + 1 < siblings.size())
                    text += " /Next " + reference(nodes[siblings[i + 1]].object);
                put(node.object, text + family(node.children, -1) + " >>\n");
            }
        };
        addSiblings(top);
        for (const Node &node : nodes)
            addSiblings(node.children);
        put(root, "<< /Type /Outlines" + family(top, 1) + " >>\n");
        return root;
    }

    void replaceCatalog(QByteArray catalog, int outline)
    {
        const qsizetype end = catalog.lastIndexOf(">>");
        if (end < 0)
            m_objects.fail(QStringLiteral("there is no catalog"));
        const PdfDocument::Binding &binding = m_content.binding;
        QByteArray entries = "/Lang " + textString(binding.language) +
                             "\n/ViewerPreferences << /DisplayDocTitle true >>\n/PageLabels << "
                             "/Nums [ ";
        if (binding.frontPages > 0)
            entries += "0 << /S /r >> ";
        entries += QByteArray::number(binding.frontPages) + " << /S /D >> ] >>\n";
        if (outline > 0)
            entries += "/Outlines " + reference(outline) + "\n/PageMode /UseOutlines\n";
        put(m_root, catalog.insert(end, entries));
    }

    void replaceInfo()
    {
        m_info = m_objects.numberIn(m_objects.trailer(), QStringLiteral("/Info\\s+(\\d+) 0 R"));
        const QString time =
            m_content.binding.creationTime.toUTC().toString(QStringLiteral("yyyyMMddHHmmss"));
        put(m_info, "<< /Title " + textString(m_content.title) + " /Creator " +
                        textString(QStringLiteral("Vantrel Graphing Tool")) +
                        " /CreationDate (D:" + time.toLatin1() + "Z) >>\n");
    }

    QByteArray written() const
    {
        const qint64 start = m_objects.end();
        QByteArray text;
        QByteArray table = "xref\n";
        for (const auto &[number, object] : m_changed) {
            const QByteArray offset =
                QByteArray::number(start + text.size()).rightJustified(10, '0');
            table += QByteArray::number(number) + " 1\n" + offset + " 00000 n \n";
            text += QByteArray::number(number) + " 0 obj\n" + object + "endobj\n";
        }
        const qint64 tableAt = start + text.size();
        static const QRegularExpression identity(QStringLiteral("/ID\\s*\\[[^\\]]*\\]"));
        const QString id = identity.match(QString::fromLatin1(m_objects.trailer())).captured();
        return text + table + "trailer\n<<\n/Size " + QByteArray::number(m_next) + "\n/Prev " +
               QByteArray::number(m_objects.tableAt()) + "\n/Root " + reference(m_root) +
               "\n/Info " + reference(m_info) + '\n' + id.toLatin1() + "\n>>\nstartxref\n" +
               QByteArray::number(tableAt) + "\n%%EOF\n";
    }

    PdfObjects &m_objects;
    const PdfAppendix &m_content;
    int m_next; ///< number of the next new object
    int m_root = 0;
    int m_info = 0;
    std::vector<int> m_pages;            ///< objects of the pages as they were written
    std::map<int, QByteArray> m_changed; ///< objects by number
};

} // namespace

QByteArray pdfAppendix(const QString &path, const PdfAppendix &appendix)
{
    PdfObjects objects(path);
    return Appendix(objects, appendix).bytes();
}
