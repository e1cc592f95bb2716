#include "editors/organizer/thumbnailseditor.h"
#include "editors/organizer/thumbnailseditor_p.h"

#include "editors/organizer/organizereditor_p.h"
#include "editors/organizer/thumbnailsmodel.h"
#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "image/imagecodecs.h"
#include "image/imagedata.h"
#include "image/sprite.h"
#include "project/project.h"

#include <QAction>
#include <QActionGroup>
#include <QBoxLayout>
#include <QFileInfo>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QSaveFile>
#include <QToolButton>

#include <algorithm>

namespace Ovra {
namespace {

// The texts of the explorer's own actions that the library's string table lacks.
class ExplorerTexts : public Translator
{
public:
    enum { ViewText, SizeText };
    QString text(uint id) override
    {
        switch (id) {
        case ViewText:
            return ThumbnailsEditor::tr("Show as icons");
        case SizeText:
            return ThumbnailsEditor::tr("Thumbnail size");
        default:
            return QString();
        }
    }
};

ExplorerTexts *explorerTexts()
{
    static ExplorerTexts texts;
    return &texts;
}

const uint ExplorerText = 207;
const uint SaveText = 216;
const QString SizeOption = QStringLiteral("thumb_size");
const QString PathOption = QStringLiteral("spr_path");

enum Glyph { GlyphView, GlyphSize, GlyphSave };

QIcon glyphIcon(Glyph glyph)
{
    QIcon icon;
    for (int side : {16, 24, 32}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / 16.0, side / 16.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(60, 60, 70));
        switch (glyph) {
        case GlyphView:
            for (int i = 0; i < 4; ++i)
                painter.drawRect(QRectF(2 + (i % 2) * 7, 2 + (i / 2) * 7, 5, 5));
            break;
        case GlyphSize:
            painter.drawRect(QRectF(1, 7, 6, 6));
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(QColor(60, 60, 70), 1.5));
            painter.drawRect(QRectF(4, 2, 10, 10));
            break;
        case GlyphSave: {
            painter.drawRect(QRectF(7, 1, 2, 7));
            QPainterPath head;
            head.moveTo(8, 12);
            head.lineTo(12.5, 7);
            head.lineTo(3.5, 7);
            head.closeSubpath();
            painter.drawPath(head);
            painter.drawRect(QRectF(2, 13, 12, 2));
            break;
        }
        }
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

QAction *makeAction(QObject *receiver, const char *name, Translator *texts, uint text, bool checkable,
                    const char *slot, bool checked)
{
    Interface *host = Interface::instance();
    QAction *action = host ? host->createAction(ActionScope{"thumbnails", 0}, QString::fromLatin1(name), texts,
                                                text, checkable, receiver, slot, nullptr, checked)
                           : nullptr;
    if (action)
        return action;
    // Without a host the editor makes its own, so that it works all the same.
    action = new QAction(texts->text(text), receiver);
    action->setObjectName(QString::fromLatin1(name));
    action->setToolTip(texts->tip(text));
    action->setCheckable(checkable);
    action->setChecked(checked);
    if (checkable)
        QObject::connect(action, SIGNAL(toggled(bool)), receiver, slot);
    else
        QObject::connect(action, SIGNAL(triggered()), receiver, slot);
    return action;
}

// The picture as a file should hold it: indexed ones in the colours of their palette.
QImage imageToSave(const Sprite *sprite)
{
    QImage picture = sprite->image();
    RGBA table[256];
    const Palette *palette = sprite->palette();
    if (picture.format() == QImage::Format_Indexed8 && palette && palette->colorTable(table)) {
        QVector<QRgb> colors(256);
        for (int i = 0; i < 256; ++i)
            colors[i] = table[i].toQRgb();
        picture.setColorTable(colors);
    }
    return picture;
}

} // namespace

const int ThumbnailsEditorPrivate::Sizes[5] = {32, 48, 64, 96, 128};

ThumbnailsEditorPrivate::ThumbnailsEditorPrivate(ThumbnailsEditor *editor)
    : QObject(editor)
    , q(editor)
{
}

ThumbnailsEditorPrivate::~ThumbnailsEditorPrivate()
{
    delete widget.data();
}

int ThumbnailsEditorPrivate::stepFor(int wanted)
{
    int best = Sizes[0];
    for (int step : Sizes) {
        if (qAbs(step - wanted) < qAbs(best - wanted))
            best = step;
    }
    return best;
}

void ThumbnailsEditorPrivate::buildActions()
{
    viewAction = makeAction(this, "thumb_view", explorerTexts(), ExplorerTexts::ViewText, true,
                            SLOT(toggleView(bool)), true);
    sizeAction = makeAction(this, "thumb_size", explorerTexts(), ExplorerTexts::SizeText, false, SLOT(nextSize()),
                            false);
    saveAction = makeAction(this, "thumb_save", ovraTranslator(), SaveText, false, SLOT(save()), false);
}

void ThumbnailsEditorPrivate::buildWidgets()
{
    widget = new QWidget;
    widget->setObjectName(QStringLiteral("thumbnails"));
    model = new ThumbnailsModel(this);
    view = new QListView(widget);
    view->setObjectName(QStringLiteral("thumb_list"));
    view->setModel(model);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setUniformItemSizes(true);
    view->setResizeMode(QListView::Adjust);
    view->setMovement(QListView::Static);
    view->setWrapping(true);
    view->setTextElideMode(Qt::ElideRight);

    auto *bar = new QHBoxLayout;
    bar->setContentsMargins(0, 0, 0, 0);
    bar->setSpacing(2);
    bar->addWidget(new OrganizerButton(viewAction, glyphIcon(GlyphView), widget));
    auto *sizeButton = new OrganizerButton(sizeAction, glyphIcon(GlyphSize), widget);
    sizeMenu = new QMenu(sizeButton);
    auto *sizes = new QActionGroup(sizeMenu);
    for (int step : Sizes) {
        QAction *entry = sizeMenu->addAction(ThumbnailsEditor::tr("%1 px").arg(step));
        entry->setObjectName(QStringLiteral("thumb_size_%1").arg(step));
        entry->setData(step);
        entry->setCheckable(true);
        sizes->addAction(entry);
        connect(entry, &QAction::triggered, this, [this, step] {
            applySize(step);
            if (Interface *host = Interface::instance())
                host->setOption(SizeOption, step);
        });
    }
    sizeButton->setMenu(sizeMenu);
    sizeButton->setPopupMode(QToolButton::MenuButtonPopup);
    bar->addWidget(sizeButton);
    bar->addWidget(new OrganizerButton(saveAction, glyphIcon(GlyphSave), widget));
    bar->addStretch(1);

    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addLayout(bar);
    layout->addWidget(view, 1);
    for (int i = 0; i < 4; ++i) {
        auto *button = new QToolButton(widget);
        button->setObjectName(QStringLiteral("thumb_action%1").arg(i + 1));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        button->hide();
        actionButtons[i] = button;
        layout->addWidget(button);
    }
    toggleView(true);
}

void ThumbnailsEditorPrivate::applySize(int wanted)
{
    size = stepFor(wanted);
    model->setThumbSize(size);
    view->setIconSize(QSize(size, size));
    if (view->viewMode() == QListView::IconMode) {
        const int text = view->fontMetrics().height();
        view->setGridSize(QSize(qMax(size, 48) + 12, size + text + 10));
    }
    for (QAction *entry : sizeMenu->actions())
        entry->setChecked(entry->data().toInt() == size);
}

void ThumbnailsEditorPrivate::toggleView(bool icons)
{
    view->setViewMode(icons ? QListView::IconMode : QListView::ListMode);
    view->setWrapping(icons);
    view->setFlow(icons ? QListView::LeftToRight : QListView::TopToBottom);
    view->setSpacing(icons ? 2 : 1);
    if (!icons)
        view->setGridSize(QSize());
    view->setMovement(QListView::Static);
    applySize(size);
}

void ThumbnailsEditorPrivate::nextSize()
{
    int next = Sizes[0];
    for (int step : Sizes) {
        if (step > size) {
            next = step;
            break;
        }
    }
    applySize(next);
    if (Interface *host = Interface::instance())
        host->setOption(SizeOption, size);
}

void ThumbnailsEditorPrivate::showActions(QAction **given)
{
    for (int i = 0; i < 4; ++i) {
        QToolButton *button = actionButtons[i];
        QAction *action = given ? given[i] : nullptr;
        if (QAction *before = button->defaultAction()) {
            if (before == action)
                continue;
            button->removeAction(before);
            disconnect(before, &QObject::destroyed, this, nullptr);
        }
        button->setDefaultAction(action);
        button->setVisible(action);
        // The button drops its own connections to an action that goes, so the editor
        // watches the action.
        if (action) {
            const QPointer<QToolButton> shown = button;
            connect(action, &QObject::destroyed, this, [shown] {
                if (shown)
                    shown->hide();
            });
        }
    }
}

QString ThumbnailsEditorPrivate::startDirectory() const
{
    Interface *host = Interface::instance();
    if (!host)
        return QString();
    if (Project *project = host->currentProject())
        return project->option(PathOption).toString();
    return host->option(PathOption, QVariant()).toString();
}

void ThumbnailsEditorPrivate::storeDirectory(const QString &directory)
{
    Interface *host = Interface::instance();
    if (!host)
        return;
    if (Project *project = host->currentProject())
        project->setOption(PathOption, directory, true);
    else
        host->setOption(PathOption, directory);
}

void ThumbnailsEditorPrivate::save()
{
    Interface *host = Interface::instance();
    const QList<Sprite *> chosen = q->selected();
    // The file chooser needs a host; with nothing chosen there is nothing to ask for.
    if (!host || chosen.isEmpty())
        return;
    const QString name = getSaveFileName(widget, ThumbnailsEditor::tr("Save sprites"), startDirectory(),
                                         QString::fromLatin1(imageFileExtension(ImageFiltersPngFirst)));
    if (name.isEmpty())
        return;
    const QFileInfo info(name);
    const QString directory = info.absolutePath();
    const QString base = info.completeBaseName();
    const QString suffix = info.suffix().isEmpty() ? QStringLiteral("png") : info.suffix();
    const QByteArray format = suffix.toUpper().toLatin1();
    storeDirectory(directory);

    // The file may be closed under a progress display that lets events through.
    const QPointer<Sprites> source = model->sprites();
    const uint maximum = uint(chosen.size());
    bool cancel = false;
    q->onSaveProgress(0, maximum, &cancel);
    for (uint i = 0; i < maximum && !cancel && source; ++i) {
        const Sprite *sprite = chosen.at(int(i));
        const QString path = QStringLiteral("%1/%2_%3.%4").arg(directory, base, QString::number(sprite->index()), suffix);
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !saveImage(&file, format.constData(), imageToSave(sprite))
            || !file.commit()) {
            tell(QMessageBox::Warning, ThumbnailsEditor::tr("Save sprites"),
                 ThumbnailsEditor::tr("The sprite could not be saved as %1.").arg(path), widget);
            return;
        }
        q->onSaveProgress(i + 1, maximum, &cancel);
    }
}

ThumbnailsEditor::ThumbnailsEditor()
    : d(new ThumbnailsEditorPrivate(this))
{
    d->buildActions();
    d->buildWidgets();
    reconfig();
}

ThumbnailsEditor::~ThumbnailsEditor() = default;

QWidget *ThumbnailsEditor::widget()
{
    return d->widget;
}

void ThumbnailsEditor::activate()
{
    ExtraEditor::activate();
}

void ThumbnailsEditor::deactivate()
{
    ExtraEditor::deactivate();
}

void ThumbnailsEditor::reconfig()
{
    Interface *host = Interface::instance();
    const QVariant wanted = host ? host->option(SizeOption, QVariant()) : QVariant();
    bool isNumber = false;
    const int size = wanted.toInt(&isNumber);
    d->applySize(isNumber && size > 0 ? size : 64);
}

void ThumbnailsEditor::retranslate()
{
    d->viewAction->setText(explorerTexts()->text(ExplorerTexts::ViewText));
    d->sizeAction->setText(explorerTexts()->text(ExplorerTexts::SizeText));
    d->saveAction->setText(ovraTranslator()->text(SaveText));
    d->saveAction->setToolTip(ovraTranslator()->tip(SaveText));
    d->widget->setWindowTitle(ovraTranslator()->text(ExplorerText));
}

void ThumbnailsEditor::release()
{
    d->model->setSprites(nullptr);
    ExtraEditor::release();
}

void ThumbnailsEditor::setFiles(Sprites *sprites, QAction **actions)
{
    d->model->setSprites(sprites);
    d->showActions(actions);
}

Sprites *ThumbnailsEditor::files() const
{
    return d->model->sprites();
}

QList<Sprite *> ThumbnailsEditor::selected() const
{
    QList<int> rows;
    const QModelIndexList chosen = d->view->selectionModel()->selectedIndexes();
    for (const QModelIndex &index : chosen)
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QList<Sprite *> sprites;
    for (int row : qAsConst(rows)) {
        if (Sprite *sprite = d->model->spriteAt(row))
            sprites << sprite;
    }
    return sprites;
}

QList<Sprite *> ThumbnailsEditor::all() const
{
    QList<Sprite *> sprites;
    for (int row = 0; row < d->model->rowCount(); ++row)
        sprites << d->model->spriteAt(row);
    return sprites;
}

void ThumbnailsEditor::update()
{
    d->model->update();
}

void ThumbnailsEditor::filesChanged(Sprites *sprites)
{
    // Rows may have come and gone without a word from the file: start over.
    d->model->setSprites(sprites);
}

void ThumbnailsEditor::onSaveProgress(uint, uint, bool *)
{
}

} // namespace Ovra
