"""Scripts that ask a report in the browser how it looks."""

# What is lit or dimmed, and how: elements that belong to a service show it in data-s.
PARTS = """
  const opacity = (element) => {
    let product = 1;
    for (let at = element; at instanceof SVGElement; at = at.parentElement) {
      product *= Number(getComputedStyle(at).opacity);
    }
    return product;
  };
  return [...document.querySelectorAll(".multiplex :is(.row, .link)")].map((element) => ({
    kind: element.classList.contains("link") ? "link" : element.closest(".output") ? "output" : "input",
    services: element.dataset.s.split(" ").filter(Boolean).map(Number),
    pid: Number(element.dataset.pid ?? element.dataset.to),
    opacity: opacity(element),
  }));
"""

# Texts of the page against what lies behind them, as WCAG 2.1 reckons contrast.
CONTRASTS = """
  const channels = (colour) => (colour.match(/[\\d.]+/g) ?? []).map(Number);
  const luminance = (colour) => {
    const [r, g, b] = channels(colour).map((c) => c / 255)
      .map((c) => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const contrast = (a, b) => {
    const [dark, light] = [luminance(a), luminance(b)].sort((x, y) => x - y);
    return (light + 0.05) / (dark + 0.05);
  };
  const opaque = (colour) => channels(colour).length === 3 || channels(colour)[3] === 1;
  const behindHtml = (element) => {
    for (let at = element; at !== null; at = at.parentElement) {
      const colour = getComputedStyle(at).backgroundColor;
      if (opaque(colour)) {
        return colour;
      }
    }
    return null;
  };
  const behindSvg = (text) => {
    const rect = text.closest(".event")?.querySelector(".block") ?? text.closest(".card")?.querySelector(".frame");
    return rect ? getComputedStyle(rect).fill : behindHtml(text.closest("svg").parentElement);
  };
  const results = [];
  for (const text of document.querySelectorAll("svg text")) {
    results.push([text.textContent, contrast(getComputedStyle(text).fill, behindSvg(text))]);
  }
  for (const selector of ["h1", "h2", "h3", "small", "p", "dt", "dd", "li", "li .figure", "th", "td", "summary",
                          "footer", ".tag"]) {
    for (const element of document.querySelectorAll(selector)) {
      results.push([`${selector}: ${element.textContent}`,
                    contrast(getComputedStyle(element).color, behindHtml(element))]);
    }
  }
  return results;
"""

# Texts of the same card or row of events that meet, and texts beyond their card's frame.
COLLISIONS = """
  const found = [];
  const boxes = (group) => [...group.querySelectorAll(":scope > text")].map((text) => [text, text.getBBox()]);
  for (const group of document.querySelectorAll(":is(.row, .head, .card, .event, .timeline, .headings)")) {
    const all = boxes(group);
    const frame = group.closest(".event")?.querySelector(".block") ?? group.closest(".card")?.querySelector(".frame");
    for (const [place, [text, box]] of all.entries()) {
      if (frame !== null && frame !== undefined) {
        const limits = frame.getBBox();
        if (box.x < limits.x || box.x + box.width > limits.x + limits.width) {
          found.push(`beyond its frame: ${text.textContent}`);
        }
      }
      for (const [other, otherBox] of all.slice(place + 1)) {
        if (box.x < otherBox.x + otherBox.width && otherBox.x < box.x + box.width &&
            box.y < otherBox.y + otherBox.height && otherBox.y < box.y + box.height) {
          found.push(`${text.textContent} meets ${other.textContent}`);
        }
      }
    }
  }
  return found;
"""
