'use strict';
(() => {
  const byId = id => document.getElementById(id);
  const main = byId('entries'), search = byId('search'), count = byId('count'), nothing = byId('nothing');
  const tip = byId('tip'), dialog = byId('detail');
  const total = count.textContent;

  const links = document.querySelectorAll('.nav a');
  const sections = [...main.querySelectorAll('section')].map((element, i) => {
    const runs = [...element.getElementsByClassName('u')];
    const own = [...element.getElementsByClassName('c')];
    return {
      element, runs, cards: own, shown: own, perRun: runs.length ? runs[0].children.length : 0, link: links[i],
      label: element.querySelector('h2 bdi').textContent,
      count: element.querySelector('h2 .n').firstChild,
    };
  });
  const cards = sections.flatMap(section => section.cards);
  const sectionOfElement = new Map(sections.map(section => [section.element, section]));
  const sectionOf = card => sectionOfElement.get(card.closest('section'));

  const textOf = (card, name) => {
    const element = card.getElementsByClassName(name)[0];
    return element ? element.textContent : '';
  };
  const titleOf = card => textOf(card, 't') || textOf(card, 'l');

  // Cards that the search leaves, in the order of the page, and the place of each among them.
  let visible = cards;
  let placeOf = null;
  const place = card => {
    placeOf ??= new Map(visible.map((each, i) => [each, i]));
    return placeOf.get(card) ?? -1;
  };

  // One card is in the order of the Tab key; arrow keys move from there.
  let current = null;
  const setCurrent = card => {
    if (current === card) return;
    if (current) current.tabIndex = -1;
    current = card;
    if (current) current.tabIndex = 0;
  };
  setCurrent(cards[0] ?? null);
  const focusCard = card => {
    if (!card) return;
    setCurrent(card);
    card.focus({ preventScroll: true, focusVisible: true });
    card.scrollIntoView({ block: 'nearest' });
  };

  // --- Search -------------------------------------------------------------------------------------------------------

  // Letters that the decomposition into base letter and mark leaves whole.
  const plain = { 'ß': 'ss', 'æ': 'ae', 'œ': 'oe', 'ø': 'o', 'ł': 'l', 'đ': 'd', 'ð': 'd', 'þ': 'th', 'ħ': 'h', 'ı': 'i', 'ς': 'σ' };
  const marks = /[\u0300-\u036f\u0591-\u05bd\u05bf\u05c1-\u05c7\u064b-\u065f\u0670]/g;
  // Most texts are plain letters and need only the first step.
  const fold = text => /^[\0-\x7f]*$/.test(text) ? text.toLowerCase()
    : text.normalize('NFKD').toLowerCase().replace(marks, '').replace(/[ßæœøłđðþħıς]/g, letter => plain[letter]);

  let texts = null;
  const buildTexts = () => {
    texts = new Map();
    for (const section of sections) {
      const group = fold(section.label);
      for (const card of section.cards) {
        const own = fold(`${card.textContent}\n${card.dataset.n}\n${card.dataset.u}`);
        texts.set(card, `${own}\n${group}`);
      }
    }
  };

  // Cards move together into full runs; those that do not match are left out of the page.
  const showMatches = (section, matches) => {
    const { element, runs, shown } = section;
    element.hidden = matches.length === 0;
    if (element.hidden || matches.length === shown.length && matches.every((card, i) => card === shown[i])) return;
    section.shown = matches;
    runs.forEach((run, i) => {
      const part = matches.slice(i * section.perRun, (i + 1) * section.perRun);
      run.replaceChildren(...part.map(card => card.parentNode));
      run.style.setProperty('--n', part.length);
      run.hidden = part.length === 0;
    });
  };

  const apply = () => {
    const words = fold(search.value).split(/\s+/).filter(Boolean);
    if (words.length) texts ?? buildTexts();
    const isMatch = card => { const text = texts.get(card); return words.every(word => text.includes(word)); };
    visible = [];
    placeOf = null;
    for (const section of sections) {
      const matches = words.length ? section.cards.filter(isMatch) : section.cards;
      for (const card of matches) visible.push(card);
      if (section.cards.length) showMatches(section, matches);
      else section.element.hidden = words.length > 0;
      section.count.data = words.length ? `${matches.length} of ${section.cards.length}` : `${section.cards.length}`;
      section.link.parentNode.hidden = section.element.hidden;
      section.link.lastElementChild.textContent = matches.length;
    }
    nothing.hidden = visible.length > 0 || words.length === 0;
    count.textContent = words.length
      ? `${visible.length} of ${cards.length} ${cards.length === 1 ? 'entry' : 'entries'}` : total;
    byId('groups').hidden = words.length > 0;
    if (current === null || place(current) < 0) setCurrent(visible[0] ?? null);
    if (words.length) scrollTo(0, 0);
  };

  let timer = 0;
  const applySoon = () => { clearTimeout(timer); timer = setTimeout(apply, cards.length > 5000 ? 150 : 30); };
  const applyNow = () => { clearTimeout(timer); apply(); };
  const clearSearch = () => {
    const focused = document.activeElement;
    search.value = '';
    applyNow();
    // A card that moved to another place in the page has lost the focus.
    if (place(focused) >= 0) focusCard(focused);
  };
  search.addEventListener('input', () => { hideTip(); applySoon(); });
  search.addEventListener('keydown', event => {
    if (event.key === 'Escape') {
      event.preventDefault();
      event.stopPropagation();
      if (search.value) clearSearch(); else focusCard(current);
    } else if (event.key === 'ArrowDown' || event.key === 'Enter') {
      event.preventDefault();
      applyNow();
      focusCard(visible[0]);
    }
  });
  byId('clear').addEventListener('click', () => { clearSearch(); search.focus(); });

  // --- Moving by keys -----------------------------------------------------------------------------------------------

  // The card in the next row, or the one before, that stands nearest below or above.
  const inRow = (card, step) => {
    const from = card.getBoundingClientRect();
    let best = null, row = null, distance = Infinity;
    for (let i = place(card) + step; i >= 0 && i < visible.length; i += step) {
      const box = visible[i].getBoundingClientRect();
      if (Math.abs(box.top - from.top) < 2) continue;
      if (row !== null && Math.abs(box.top - row) >= 2) break;
      row = box.top;
      const away = Math.abs(box.left - from.left);
      if (away < distance) { distance = away; best = visible[i]; }
    }
    return best;
  };
  const endOfGroup = (card, isLast) => sectionOf(card).shown.at(isLast ? -1 : 0);
  const target = (card, event) => {
    switch (event.key) {
      case 'ArrowRight': return visible[place(card) + 1];
      case 'ArrowLeft': return visible[place(card) - 1];
      case 'ArrowDown': return inRow(card, 1);
      case 'ArrowUp': return inRow(card, -1);
      case 'Home': return event.ctrlKey ? visible[0] : endOfGroup(card, false);
      case 'End': return event.ctrlKey ? visible.at(-1) : endOfGroup(card, true);
      default: return undefined;
    }
  };
  const moves = /^(Arrow(Right|Left|Up|Down)|Home|End)$/;
  main.addEventListener('keydown', event => {
    const card = event.target.closest('.c');
    if (!card || event.altKey || event.metaKey || event.shiftKey || !moves.test(event.key)) return;
    if (event.ctrlKey && event.key.startsWith('Arrow')) return;
    event.preventDefault();
    focusCard(target(card, event));
  });
  document.addEventListener('keydown', event => {
    if (dialog.open || event.target === search) return;
    if (event.key === '/' && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      search.focus();
      search.select();
    } else if (event.key === 'Escape') {
      if (!tip.hidden) hideTip(); else if (search.value) clearSearch();
    }
  });

  // --- Tooltip ------------------------------------------------------------------------------------------------------

  let described = null, tipTimer = 0;
  function hideTip() {
    clearTimeout(tipTimer);
    tip.hidden = true;
    described?.removeAttribute('aria-describedby');
    described = null;
  }
  const showTip = card => {
    hideTip();
    // Text of another form than title and description stands alone.
    tip.firstChild.textContent = card.querySelector('.d.w') ? '' : titleOf(card);
    tip.lastChild.textContent = textOf(card, 'd');
    tip.style.maxHeight = '';
    tip.hidden = false;
    described = card;
    card.setAttribute('aria-describedby', 'tip');
    const at = card.getBoundingClientRect(), box = tip.getBoundingClientRect();
    const width = document.documentElement.clientWidth, height = document.documentElement.clientHeight;
    const left = Math.min(Math.max(8, at.left + (at.width - box.width) / 2), width - box.width - 8);
    const above = at.top - 14, below = height - at.bottom - 14;
    const isBelow = box.height <= below || below >= above;
    const used = Math.min(box.height, 320, isBelow ? below : above);
    tip.style.left = `${left}px`;
    tip.style.top = `${isBelow ? at.bottom + 6 : at.top - 6 - used}px`;
    tip.style.maxHeight = `${used}px`;
  };
  const later = (task, delay) => { clearTimeout(tipTimer); tipTimer = setTimeout(task, delay); };

  main.addEventListener('pointerover', event => {
    const card = event.target.closest('.c');
    if (event.pointerType === 'mouse' && card && card !== described) later(() => showTip(card), 350);
  });
  main.addEventListener('pointerout', event => {
    if (!event.relatedTarget?.closest?.('.c, #tip')) later(hideTip, 200);
  });
  tip.addEventListener('pointerenter', () => clearTimeout(tipTimer));
  tip.addEventListener('pointerleave', () => later(hideTip, 200));
  main.addEventListener('focusin', event => {
    const card = event.target.closest('.c');
    if (!card) return;
    setCurrent(card);
    // After the browser has scrolled to the card.
    if (card.matches(':focus-visible')) requestAnimationFrame(() => { if (document.activeElement === card) showTip(card); });
  });
  main.addEventListener('focusout', hideTip);
  addEventListener('scroll', () => {
    if (described && document.activeElement === described) showTip(described); else hideTip();
  }, { passive: true });
  addEventListener('resize', hideTip);

  // --- Details ------------------------------------------------------------------------------------------------------

  // Pictures stand once in the style sheet; where there are two sizes the larger comes last.
  const pictureOf = card => {
    const found = getComputedStyle(card.firstElementChild).backgroundImage.match(/url\("([^"]*)"\)/g);
    return found ? found.at(-1).slice(5, -2) : '';
  };
  let shown = null;
  const showDetail = card => {
    shown = card;
    const isMissing = card.firstElementChild.classList.contains('p0');
    byId('detail-none').hidden = !isMissing;
    byId('detail-picture').hidden = isMissing;
    if (isMissing) byId('detail-picture').removeAttribute('src'); else byId('detail-picture').src = pictureOf(card);
    byId('detail-title').textContent = titleOf(card);
    byId('detail-text').textContent = textOf(card, 'd');
    byId('detail-group').textContent = sectionOf(card).label;
    byId('detail-kind').textContent = [textOf(card, 'k'), textOf(card, 's') || 'Own library'].filter(Boolean).join(' · ');
    byId('detail-name').textContent = card.dataset.n;
    byId('detail-data').textContent = card.dataset.u;
    const at = place(card);
    byId('place').textContent = `${at + 1} of ${visible.length}`;
    byId('previous').disabled = at <= 0;
    byId('next').disabled = at < 0 || at + 1 >= visible.length;
    byId('copied').textContent = '';
  };
  const stepDetail = step => {
    const card = visible[place(shown) + step];
    if (!card) return;
    showDetail(card);
    byId('detail-title').focus();
  };

  main.addEventListener('click', event => {
    const card = event.target.closest('.c');
    if (!card) return;
    hideTip();
    showDetail(card);
    dialog.showModal();
    byId('detail-title').focus();
  });
  // The browser gives the focus back to the card that opened the dialog, which need not be the one shown last.
  dialog.addEventListener('close', () => focusCard(shown));
  dialog.addEventListener('click', event => { if (event.target === dialog) dialog.close(); });
  dialog.addEventListener('keydown', event => {
    if (event.altKey || event.ctrlKey || event.metaKey || event.shiftKey) return;
    if (event.key === 'ArrowLeft') stepDetail(-1);
    if (event.key === 'ArrowRight') stepDetail(1);
  });
  byId('previous').addEventListener('click', () => stepDetail(-1));
  byId('next').addEventListener('click', () => stepDetail(1));
  byId('close').addEventListener('click', () => dialog.close());

  // Browsers that keep the clipboard from pages of the file system still copy what is selected.
  const copySelected = element => {
    getSelection().selectAllChildren(element);
    return document.execCommand('copy');
  };
  dialog.addEventListener('click', async event => {
    const button = event.target.closest('.copy');
    if (!button) return;
    const source = byId(button.dataset.of);
    let isCopied = false;
    try {
      await navigator.clipboard.writeText(source.textContent);
      isCopied = true;
    } catch {
      isCopied = copySelected(source);
    }
    button.textContent = isCopied ? 'Copied' : 'Press Ctrl+C';
    byId('copied').textContent = isCopied ? `Copied ${source.textContent}` : 'The text is selected; press Ctrl+C.';
    setTimeout(() => { button.textContent = 'Copy'; }, 1500);
  });

  // --- Groups -------------------------------------------------------------------------------------------------------

  const onScreen = new Set();
  let marked = null, chosen = null;
  const markGroup = () => {
    const link = chosen ?? sections.find(section => onScreen.has(section.element))?.link;
    if (!link || link === marked) return;
    marked?.removeAttribute('aria-current');
    marked = link;
    marked.setAttribute('aria-current', 'true');
    const list = marked.closest('ul').parentNode, strip = marked.closest('ul'), item = marked.parentNode;
    list.scrollTop = item.offsetTop - list.clientHeight / 2;
    strip.scrollLeft = item.offsetLeft - strip.clientWidth / 2;
  };
  // A group near the end of the page cannot be scrolled to the top; the mark still follows the choice.
  document.querySelector('.nav').addEventListener('click', event => {
    chosen = event.target.closest('a');
    markGroup();
  });
  for (const type of ['wheel', 'touchmove', 'keydown']) addEventListener(type, () => { chosen = null; }, { passive: true });
  const watcher = new IntersectionObserver(entries => {
    for (const entry of entries) onScreen[entry.isIntersecting ? 'add' : 'delete'](entry.target);
    markGroup();
  }, { rootMargin: '-110px 0px -55% 0px' });
  for (const section of sections) watcher.observe(section.element);
})();
