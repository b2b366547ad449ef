#include "PhotoViewNode.h"

#include <algorithm>
#include <cmath>

namespace lumagrid {

namespace {

constexpr double kMargin = 32;  // points around the stage that are kept sharp for the next move

QMatrix4x4 photoToStage(const QRectF& zoomed, QSize photo) {
  QMatrix4x4 matrix;
  matrix.translate(static_cast<float>(zoomed.x()), static_cast<float>(zoomed.y()));
  matrix.scale(static_cast<float>(zoomed.width() / photo.width()),
               static_cast<float>(zoomed.height() / photo.height()));
  return matrix;
}

QRectF visiblePart(const PhotoViewFrame& frame, const QRectF& zoomed) {
  const QRectF stage = QRectF(QPointF(), frame.stage).adjusted(-kMargin, -kMargin, kMargin, kMargin);
  const double across = frame.pyramid->size().width() / zoomed.width();
  const double down = frame.pyramid->size().height() / zoomed.height();
  return {(stage.x() - zoomed.x()) * across, (stage.y() - zoomed.y()) * down, stage.width() * across,
          stage.height() * down};
}

double photoPixelsPerDevicePixel(const PhotoViewFrame& frame, const QRectF& zoomed) {
  const QSize photo = frame.pyramid->size();
  const double pixels = std::max(photo.width(), photo.height());
  return pixels / (std::max(zoomed.width(), zoomed.height()) * frame.devicePixelRatio);
}

}  // namespace

// The patches' nodes go before the textures that they show.
PhotoViewNode::~PhotoViewNode() {
  m_nodes.clear();
}

bool PhotoViewNode::show(const PhotoViewFrame& frame) {
  updatePhoto(frame);
  ++m_frame;
  m_patches.clear();
  const QSize photo = frame.pyramid->size();
  const QRectF zoomed = zoomedRect(frame.fittedRect, frame.stage, frame.zoom);
  setMatrix(photoToStage(zoomed, photo));
  bool pending = false;
  if (frame.zoom.scale <= 1 || frame.fittedImage.size() == photo) {
    m_patches.push_back(
        {m_fittedTexture.get(), QRectF(QPointF(), QSizeF(frame.fittedImage.size())), QRectF(QPointF(), QSizeF(photo))});
  } else {
    pending = showBlocks(frame, levelFor(photoPixelsPerDevicePixel(frame, zoomed), frame.pyramid->levelCount()));
  }
  applyPatches();
  dropUnseen();
  return pending;
}

void PhotoViewNode::updatePhoto(const PhotoViewFrame& frame) {
  if (m_pyramid.lock() != frame.pyramid) {
    m_nodes.clear();
    m_blocks.clear();
    m_blockBytes = 0;
    m_pyramid = frame.pyramid;
    m_fittedTexture.reset();
  }
  if (!m_fittedTexture || m_fittedImageKey != frame.fittedImage.cacheKey()) {
    m_nodes.clear();
    m_fittedTexture = makeTexture(frame.fittedImage);
    m_fittedImageKey = frame.fittedImage.cacheKey();
  }
}

bool PhotoViewNode::showBlocks(const PhotoViewFrame& frame, int level) {
  const QRectF visible = visiblePart(frame, zoomedRect(frame.fittedRect, frame.stage, frame.zoom));
  const QSize photo = frame.pyramid->size();
  const QRect blocks = blocksTouching(visible, photo, level);
  if (blocks.isEmpty()) {
    return false;
  }
  const bool pending = upload(frame, level, blocks, visible);
  for (int row = blocks.top(); row <= blocks.bottom(); ++row) {
    for (int column = blocks.left(); column <= blocks.right(); ++column) {
      addPatches({level, column, row}, photo);
    }
  }
  return pending;
}

bool PhotoViewNode::upload(const PhotoViewFrame& frame, int level, const QRect& blocks, const QRectF& visible) {
  const QImage texels = frame.pyramid->level(level);
  if (texels.isNull()) {
    return false;  // whoever builds it asks for a frame
  }
  const QSize photo = frame.pyramid->size();
  std::vector<std::pair<double, PhotoBlock>> missing;  // by distance from the middle
  for (int row = blocks.top(); row <= blocks.bottom(); ++row) {
    for (int column = blocks.left(); column <= blocks.right(); ++column) {
      const PhotoBlock block{level, column, row};
      if (m_blocks.contains(block)) {
        continue;
      }
      const QPointF away = block.photoRect(photo).center() - visible.center();
      missing.emplace_back(std::hypot(away.x(), away.y()), block);
    }
  }
  std::sort(missing.begin(), missing.end());
  qint64 uploaded = 0;
  for (const auto& [distance, block] : missing) {
    const QRect part = block.texels(texels.size());
    const qint64 bytes = qint64{4} * part.width() * part.height();
    if (uploaded > 0 && uploaded + bytes > kUploadBytes) {
      return true;
    }
    m_blocks[block] = {makeTexture(texels.copy(part)), m_frame, bytes};
    m_blockBytes += bytes;
    uploaded += bytes;
  }
  return false;
}

void PhotoViewNode::addPatches(const PhotoBlock& block, QSize photo) {
  const QRectF part = block.photoRect(photo);
  if (Texture* const own = find(block)) {
    return addPatch(*own, block, part);
  }

  // While zooming out, the finer blocks are still there.
  if (block.level > 0) {
    std::vector<PhotoBlock> children;
    for (const int k : {0, 1, 2, 3}) {
      const PhotoBlock child{block.level - 1, 2 * block.column + k % 2, 2 * block.row + k / 2};
      if (!child.photoRect(photo).isEmpty()) {
        children.push_back(child);
      }
    }
    if (std::all_of(children.begin(), children.end(), [this](const PhotoBlock& child) { return find(child); })) {
      for (const PhotoBlock& child : children) {
        addPatch(*find(child), child, child.photoRect(photo));
      }
      return;
    }
  }
  // A coarser one is of use while a level that coarse exists: the map is ordered by level.
  for (PhotoBlock coarser = block.parent(); !m_blocks.empty() && coarser.level <= m_blocks.rbegin()->first.level;
       coarser = coarser.parent()) {
    if (Texture* const found = find(coarser)) {
      return addPatch(*found, coarser, part);
    }
  }
  const QSize fitted = m_fittedTexture->textureSize();
  const double across = static_cast<double>(fitted.width()) / photo.width();
  const double down = static_cast<double>(fitted.height()) / photo.height();
  m_patches.push_back({m_fittedTexture.get(),
                       QRectF(part.x() * across, part.y() * down, part.width() * across, part.height() * down), part});
}

PhotoViewNode::Texture* PhotoViewNode::find(const PhotoBlock& block) {
  const auto found = m_blocks.find(block);
  return found == m_blocks.end() ? nullptr : &found->second;
}

void PhotoViewNode::addPatch(Texture& texture, const PhotoBlock& block, const QRectF& part) {
  texture.shownInFrame = m_frame;
  m_patches.push_back({texture.texture.get(), block.sourceRect(part), part});
}

void PhotoViewNode::applyPatches() {
  if (m_nodes.size() > m_patches.size()) {
    m_nodes.resize(m_patches.size());
  }
  for (std::size_t i = 0; i < m_patches.size(); ++i) {
    const Patch& patch = m_patches[i];
    if (i == m_nodes.size()) {
      m_nodes.emplace_back(m_window->createImageNode())->setFiltering(QSGTexture::Linear);
      m_nodes.back()->setFlag(OwnedByParent, false);
      m_nodes.back()->setTexture(patch.texture);
      appendChildNode(m_nodes.back().get());
    }
    QSGImageNode& node = *m_nodes[i];
    if (node.texture() == patch.texture && node.rect() == patch.target && node.sourceRect() == patch.source) {
      continue;
    }
    node.setTexture(patch.texture);
    node.setRect(patch.target);
    node.setSourceRect(patch.source);
  }
}

void PhotoViewNode::dropUnseen() {
  if (m_blockBytes <= kTextureBytes) {
    return;
  }
  std::vector<std::pair<quint64, PhotoBlock>> unseen;
  for (const auto& [block, texture] : m_blocks) {
    if (texture.shownInFrame != m_frame) {
      unseen.emplace_back(texture.shownInFrame, block);
    }
  }
  std::sort(unseen.begin(), unseen.end());
  for (const auto& [frame, block] : unseen) {
    if (m_blockBytes <= kTextureBytes) {
      break;
    }
    const auto found = m_blocks.find(block);
    m_blockBytes -= found->second.bytes;
    m_blocks.erase(found);
  }
}

std::unique_ptr<QSGTexture> PhotoViewNode::makeTexture(const QImage& image) const {
  const auto options = image.hasAlphaChannel() ? QQuickWindow::CreateTextureOptions() : QQuickWindow::TextureIsOpaque;
  // The one format that is uploaded without a conversion; the unused byte of an opaque pixel is 255.
  QImage pixels = image;
  if (pixels.format() == QImage::Format_RGBX8888) {
    pixels = QImage(
        image.constBits(), image.width(), image.height(), image.bytesPerLine(), QImage::Format_RGBA8888_Premultiplied,
        [](void* kept) { delete static_cast<QImage*>(kept); }, std::make_unique<QImage>(image).release());
  }
  return std::unique_ptr<QSGTexture>(m_window->createTextureFromImage(pixels, options));
}

}  // namespace lumagrid
