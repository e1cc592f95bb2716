#include "editors/code/codeeditor_p.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFile>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>
#include <QXmlStreamReader>

#include <algorithm>

namespace Ovra {

namespace {

// Keys whose text ends a word rather than continuing it.
const QString &separators()
{
    static const QString characters = QStringLiteral("~!@#$%^&*)_+{}|:\"<>?,./;'[]\\-=");
    return characters;
}

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber();
}

// Reads <model prefix="..."><word value="..."/>...</model> elements; anything else is
// passed over. False on a reader error, with `words` then of no use.
bool readModels(QIODevice *device, QMap<QString, QStringList> &words)
{
    QXmlStreamReader reader(device);
    reader.setNamespaceProcessing(false);
    QString prefix;
    bool inModel = false;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("model")) {
            prefix = reader.attributes().value(QLatin1String("prefix")).toString();
            inModel = true;
            words[prefix];
        } else if (reader.isEndElement() && reader.name() == QLatin1String("model")) {
            inModel = false;
        } else if (inModel && reader.isStartElement() && reader.name() == QLatin1String("word")) {
            const QString value = reader.attributes().value(QLatin1String("value")).toString();
            if (!value.isEmpty())
                words[prefix] << value;
        }
    }
    return !reader.hasError();
}

} // namespace

bool CodeEditorPrivate::loadCompleter(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QMap<QString, QStringList> words;
    if (!readModels(&file, words))
        return false;

    // The completer is told the model is sorted without case, so it is.
    const auto lessNoCase = [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; };
    QMap<QString, QStringListModel *> loaded;
    for (auto it = words.begin(); it != words.end(); ++it) {
        std::sort(it.value().begin(), it.value().end(), lessNoCase);
        it.value().removeDuplicates();
        loaded.insert(it.key(), new QStringListModel(it.value(), this));
    }
    completer->popup()->hide();
    completer->setModel(nullptr);
    qDeleteAll(models);
    models = loaded;
    return true;
}

// Before the base class sees the key: Insert toggles overwriting, and the keys the
// popup acts on are left to it while it shows. True if the key is done with.
bool CodeEditorPrivate::keyBeforeBase(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier) {
        q->setOverwriteMode(!q->overwriteMode());
        q->QPlainTextEdit::keyPressEvent(event);
        return true;
    }
    if (q->viewport()->cursor().shape() != Qt::BlankCursor)
        q->viewport()->setCursor(Qt::BlankCursor);
    foldHoverTimer.stop();
    pendingFoldLine = -1;
    if (completer->popup()->isVisible()) {
        switch (event->key()) {
        case Qt::Key_Escape:
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            event->ignore();
            return true;
        default:
            break;
        }
    }
    return false;
}

// After the base class has typed the key: find the model whose prefix stands before
// the word being typed, and offer its words.
void CodeEditorPrivate::keyAfterBase(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const Qt::KeyboardModifiers ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    if ((modifiers & ctrlShift) && !(modifiers & ~ctrlShift) && event->text().isEmpty())
        return;

    const QTextCursor cursor = q->textCursor();
    const QString text = cursor.block().text().left(cursor.positionInBlock());
    QString line;
    line.reserve(text.size());
    for (const QChar c : text) {
        if (!c.isSpace())
            line += c;
    }
    int wordStart = line.size();
    while (wordStart > 0 && isWordChar(line.at(wordStart - 1)))
        --wordStart;
    const QString word = line.mid(wordStart);
    const QString before = line.left(wordStart);

    // The longest prefix that ends the line before the word, with no letter, digit or
    // point in front of it.
    QStringListModel *found = nullptr;
    int foundLength = -1;
    for (auto it = models.constBegin(); it != models.constEnd(); ++it) {
        const QString &prefix = it.key();
        if (!before.endsWith(prefix) || prefix.size() <= foundLength)
            continue;
        const int at = before.size() - prefix.size();
        const QChar previous = at > 0 ? before.at(at - 1) : QChar();
        if (at == 0 || !(previous.isLetterOrNumber() || previous == QLatin1Char('.'))) {
            found = it.value();
            foundLength = prefix.size();
        }
    }
    QAbstractItemView *popup = completer->popup();
    const bool modifier = modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const QString typed = event->text();
    if (!found || modifier || typed.isEmpty() || separators().contains(typed.right(1)) || word.isEmpty()) {
        popup->hide();
        return;
    }
    if (completer->model() != found)
        completer->setModel(found);
    if (word != completer->completionPrefix()) {
        completer->setCompletionPrefix(word);
        popup->setCurrentIndex(completer->completionModel()->index(0, 0));
    }
    QRect rect = q->cursorRect();
    rect.setWidth(popup->sizeHintForColumn(0) + popup->verticalScrollBar()->sizeHint().width());
    completer->complete(rect);
}

// The rest of the chosen word goes in after what has been typed of it.
void CodeEditorPrivate::insertCompletion(const QString &completion)
{
    if (completer->widget() != q)
        return;
    QTextCursor cursor = q->textCursor();
    const int typed = completer->completionPrefix().size();
    cursor.insertText(completion.mid(typed));
    q->setTextCursor(cursor);
}

} // namespace Ovra
