// The page of an installation comes alive. Texts reach it through textContent alone; what things
// mean is told by the data that the page was written with.
"use strict";

(() => {
  const make = (name, attributes = {}, ...children) => {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.append(...children);
    return element;
  };
  const byId = (id) => document.getElementById(id);
  const dataOf = (element) => JSON.parse(element.textContent);
  const say = (text) => { byId("said").textContent = text; };

  // ---- The chassis and what their pictures show ----

  class Rack {
    constructor(section) {
      this.section = section;
      this.number = Number(section.dataset.chassis);
      this.picture = section.querySelector("svg");
    }

    // Read at the first need: most chassis of a large installation are never pointed at.
    get data() {
      if (!this.read) {
        this.read = dataOf(this.section.querySelector("script"));
        this.slots = new Map(this.read.Slots.map((slot) => [slot.SlotNumber, slot]));
      }
      return this.read;
    }

    slot(number) { return this.data && this.slots.get(number); }
    groups(key) { return this.picture.querySelectorAll(`[data-key="${key}"]`); }
    slotsWhere(fits) { return this.data.Slots.filter(fits).map((slot) => slot.SlotNumber); }
  }

  const racks = new Map();
  for (const section of document.querySelectorAll("section.rack")) {
    const rack = new Rack(section);
    racks.set(rack.number, rack);
  }

  // What a group of a picture shows: its kind, its number, and the slot of a star line.
  const targetOf = (element) => {
    const group = element.closest?.("[data-key]");
    const section = element.closest?.("section.rack");
    if (!group || !section) return null;
    const [kind, number, slot] = group.dataset.key.split(" ");
    if (kind === "stub" || kind === "guide") return null;
    const target = { rack: racks.get(Number(section.dataset.chassis)), kind, number: Number(number) };
    if (slot !== undefined) target.slot = Number(slot);
    if (kind === "module") target.kind = "slot";
    return target;
  };

  const trigger = {
    star: { name: "Star trigger", line: "line", number: "StarTriggerNumber", of: "StarTriggerLine",
            controller: "StarTriggerControllerName" },
    dstar: { name: "DStar trigger", line: "set", number: "DStarTriggerNumber", of: "DStarTriggerSet",
             controller: "DStarTriggerControllerName" },
  };

  const moduleSlot = (slot) => slot.OccupyingModuleSlot ?? slot.SlotNumber;
  const busSlots = (rack, bus) => rack.slotsWhere((slot) => slot.TriggerBusNumber === bus);
  const onTrigger = (rack, kind, number) =>
    rack.slotsWhere((slot) => slot[trigger[kind].number] === number);
  const controllers = (rack, kind, number) =>
    rack.slotsWhere((slot) => slot[trigger[kind].number] === number &&
                              trigger[kind].controller in slot);
  const bridgesAt = (rack, bus) => rack.data.TriggerBridges.filter(
    (bridge) => bridge.BridgeSourceTriggerBus === bus || bridge.BridgeDestinationTriggerBus === bus);

  // The keys of all groups that belong to a slot, a bus and so on.
  const slotKeys = (rack, number) => {
    const slot = rack.slot(number);
    return slot ? [`slot ${number}`, `module ${moduleSlot(slot)}`] : [`slot ${number}`];
  };

  const wiredTo = {
    slot(rack, { number }) {
      const slot = rack.slot(number);
      const keys = slotKeys(rack, number);
      if (!slot) return keys;
      keys.push(`bus ${slot.TriggerBusNumber}`, `guide ${number}`);
      for (const other of busSlots(rack, slot.TriggerBusNumber)) {
        keys.push(...slotKeys(rack, other), `stub ${other}`);
      }
      for (const kind of ["star", "dstar"]) {
        const star = slot[trigger[kind].number];
        if (star === undefined) continue;
        keys.push(`${kind} ${star}`, `${kind} ${star} ${number}`);
        const drives = trigger[kind].controller in slot;
        const others = drives ? onTrigger(rack, kind, star) : controllers(rack, kind, star);
        for (const other of others) {
          keys.push(`${kind} ${star} ${other}`, `guide ${other}`, ...slotKeys(rack, other));
        }
      }
      return keys;
    },
    bus(rack, { number }) {
      const keys = [`bus ${number}`];
      for (const slot of busSlots(rack, number)) keys.push(...slotKeys(rack, slot), `stub ${slot}`);
      for (const bridge of bridgesAt(rack, number)) keys.push(...wiredTo.bridge(rack, bridge));
      return keys;
    },
    bridge(rack, target) {
      const number = target.BridgeNumber ?? target.number;
      const keys = [`bridge ${number}`];
      for (const bridge of rack.data.TriggerBridges.filter((one) => one.BridgeNumber === number)) {
        keys.push(`bus ${bridge.BridgeSourceTriggerBus}`, `bus ${bridge.BridgeDestinationTriggerBus}`);
      }
      return keys;
    },
    star: (rack, target) => starKeys(rack, "star", target),
    dstar: (rack, target) => starKeys(rack, "dstar", target),
  };

  function starKeys(rack, kind, { number, slot }) {
    const all = onTrigger(rack, kind, number);
    const line = new Set([slot, ...controllers(rack, kind, number)]);
    const wanted = slot === undefined || controllers(rack, kind, number).includes(slot)
      ? all : all.filter((other) => line.has(other));
    return [`${kind} ${number}`, ...wanted.flatMap((other) =>
      [`${kind} ${number} ${other}`, `guide ${other}`, ...slotKeys(rack, other)])];
  }

  // ---- Light on what is wired to a target, and its details ----

  const chosen = [];
  let lit = [];

  const lightKeys = (rack, keys) => {
    rack.picture.classList.add("focused");
    lit.push(rack.picture);
    for (const key of new Set(keys)) {
      for (const group of rack.groups(key)) {
        group.classList.add("lit");
        lit.push(group);
      }
    }
  };

  const light = (targets) => {
    for (const element of lit) element.classList.remove("lit", "focused");
    lit = [];
    for (const target of targets) lightKeys(target.rack, wiredTo[target.kind](target.rack, target));
    const [first, second] = targets;
    if (second && first.rack === second.rack) {
      const ways = [[first, second], [second, first]].flatMap((pair) => waysBetween(...pair)?.list ?? []);
      for (const number of ways.flatMap(({ bridges }) => bridges)) {
        lightKeys(first.rack, wiredTo.bridge(first.rack, { number }));
      }
    }
  };

  const table = (rows) => make("table", {}, ...rows.map(([name, value]) =>
    make("tr", {}, make("th", { scope: "row" }, name), make("td", {}, String(value)))));

  const attributesOf = (item) => Object.entries(item).filter(([, value]) => typeof value !== "object");
  const failuresOf = (item) => Object.entries(item.failures ?? {}).map(
    ([name, { detail, constant }]) => [name, `${detail} (${constant})`]);

  const allAttributes = (items) => make("details", {}, make("summary", {}, "All attributes"),
    ...items.flatMap(([title, item]) =>
      [make("h4", {}, title), table([...attributesOf(item), ...failuresOf(item)])]));

  const link = (rack, slot) => make("a", { href: `#${rack.number}/${slot}` }, `${rack.number}/${slot}`);
  const slotLinks = (rack, slots) => slots.flatMap((slot, n) => [n > 0 ? ", " : "", link(rack, slot)]);

  const findingsAbout = (rack, key) => {
    const found = rack.section.querySelectorAll(`[data-about~="${key.replace(" ", "-")}"]`);
    return found.length === 0 ? [] : [make("ul", { class: "findings" },
      ...[...found].map((item) => make("li", { class: item.className },
        ...item.cloneNode(true).childNodes)))];
  };

  const bridgeRow = (bridge) => [
    `Bridge ${bridge.BridgeNumber}`,
    `bus ${bridge.BridgeSourceTriggerBus} to bus ${bridge.BridgeDestinationTriggerBus}: ${bridge.lines}`];

  const told = {
    slot(rack, { number }) {
      const slot = rack.slot(number);
      if (!slot) return [make("h3", {}, `Slot ${rack.number}/${number}`)];
      const items = [["Slot", slot], ...slot.Devices.map((device) => ["Function", device])];
      return [make("h3", {}, "Slot ", link(rack, number)), table([...slot.told, ...failuresOf(slot)]),
              ...findingsAbout(rack, `slot ${number}`), allAttributes(items)];
    },
    bus(rack, { number }) {
      const names = new Set(rack.data.Slots.filter((slot) => slot.TriggerBusNumber === number)
        .map((slot) => slot.TriggerBusName).filter(Boolean));
      return [make("h3", {}, `Chassis ${rack.number}, trigger bus ${number}`),
              make("p", {}, "Slots ", ...slotLinks(rack, busSlots(rack, number))),
              table([...[...names].map((name) => ["Name", name]),
                     ...bridgesAt(rack, number).map(bridgeRow)]),
              ...findingsAbout(rack, `bus ${number}`)];
    },
    bridge(rack, { number }) {
      const bridges = rack.data.TriggerBridges.filter((bridge) => bridge.BridgeNumber === number);
      return [make("h3", {}, `Chassis ${rack.number}, bridge ${number}`), table(bridges.map(bridgeRow)),
              ...findingsAbout(rack, `bridge ${number}`),
              allAttributes(bridges.map((bridge) => ["Bridge", bridge]))];
    },
    star: (rack, target) => toldOfStar(rack, "star", target),
    dstar: (rack, target) => toldOfStar(rack, "dstar", target),
  };

  function toldOfStar(rack, kind, { number, slot }) {
    const names = trigger[kind];
    const drivers = controllers(rack, kind, number);
    const rows = onTrigger(rack, kind, number)
      .filter((other) => slot === undefined || slot === other || drivers.includes(slot))
      .map((other) => rack.slot(other))
      .filter((one) => names.of in one)
      .map((one) => [`${names.line} ${one[names.of]}`, `slot ${rack.number}/${one.SlotNumber}`]);
    return [make("h3", {}, `Chassis ${rack.number}, ${names.name} ${number}`),
            make("p", {}, "Controller: ", ...(drivers.length ? slotLinks(rack, drivers) : ["none"])),
            table(rows), ...findingsAbout(rack, `${kind} ${number}`)];
  }

  // ---- The trigger lines between two slots ----

  function waysBetween({ rack, number: from }, { number: to }) {
    const [source, destination] = [from, to].map((number) => rack.slot(number)?.TriggerBusNumber);
    return rack.data.ways[`${source}>${destination}`];
  }

  const busSentences = (rack, from, to) => {
    const [a, b] = [rack.slot(from)?.TriggerBusNumber, rack.slot(to)?.TriggerBusNumber];
    if (a === undefined || b === undefined) {
      return [`Slot ${rack.number}/${a === undefined ? from : to} is on no trigger bus.`];
    }
    if (a === b) return [`Both are on trigger bus ${a}, and share its lines 0-7.`];
    const place = (number) => `${rack.number}/${number} (bus ${rack.slot(number).TriggerBusNumber})`;
    return [...[[from, to], [to, from]].flatMap(([begin, end]) => {
      const ways = waysBetween({ rack, number: begin }, { number: end });
      const head = `From ${place(begin)} to ${place(end)}`;
      if (!ways) return [`${head}: not worked out for so many buses; varmex triggers tells it.`];
      const sentences = ways.list.map(({ bridges, lines }) =>
        `${head} by bridge ${bridges.join(", then ")}: ${lines}.`);
      if (!ways.isComplete) sentences.push(`${head} there are more ways; varmex triggers tells them.`);
      return sentences.length ? sentences : [`${head}: no bridge takes a line.`];
    }), ...rack.data.TriggerBridges.filter((bridge) => failuresOf(bridge).length).map((bridge) =>
      `Bridge ${bridge.BridgeNumber} can't be read in full, which may hide ways.`)];
  };

  const starSentences = (rack, from, to) => Object.values(trigger).flatMap((names) => {
    const ends = [from, to].map((number) => rack.slot(number) ?? {});
    const star = ends[0][names.number];
    if (from === to || star === undefined || ends[1][names.number] !== star) return [];
    const roles = ends.map((end) => `${rack.number}/${end.SlotNumber} is ` +
      [names.controller in end && "the controller", names.of in end && `${names.line} ${end[names.of]}`]
        .filter(Boolean).join(" and "));
    const isDirect = ends.some((end, n) => names.controller in end && names.of in ends[1 - n]);
    const joint = isDirect ? "this line joins the two" : "the controller can join the two";
    return [`${names.name} ${star}: ${roles.join(", ")}; ${joint}.`];
  });

  const linesBetween = ([first, second]) => {
    const place = ({ rack, number }) => `${rack.number}/${number}`;
    const sentences = first.rack === second.rack
      ? [...busSentences(first.rack, first.number, second.number),
         ...starSentences(first.rack, first.number, second.number)]
      : ["They are in different chassis, which share no trigger lines."];
    return make("section", { id: "between" },
      make("h3", {}, `Trigger lines between ${place(first)} and ${place(second)}`),
      make("ul", {}, ...sentences.map((sentence) => make("li", {}, sentence))));
  };

  const details = byId("details");
  const help = [...details.childNodes];
  const close = make("button", { type: "button", class: "close", "aria-label": "Close details" }, "\u00d7");

  const show = (target) => {
    light(target ? [target] : chosen);
    const shown = target ? [target] : chosen;
    const parts = shown.flatMap(({ rack, kind, number, slot }) => told[kind](rack, { number, slot }));
    if (!target && chosen.length === 2) parts.unshift(linesBetween(chosen));
    details.replaceChildren(...(parts.length ? [close, ...parts] : help));
    details.classList.toggle("open", parts.length > 0);
  };

  const markChosen = () => {
    for (const element of document.querySelectorAll("svg .chosen")) {
      element.classList.remove("chosen");
      element.removeAttribute("aria-pressed");
    }
    for (const { rack, number } of chosen) {
      for (const group of rack.groups(`slot ${number}`)) {
        group.classList.add("chosen");
        group.setAttribute("aria-pressed", "true");
      }
    }
    show(null);
    const last = chosen[chosen.length - 1];
    if (last) {
      history.replaceState(null, "", `#${last.rack.number}/${last.number}`);
      say(chosen.length === 2 ? byId("between").textContent
                              : `Slot ${last.rack.number}/${last.number} chosen.`);
    }
  };

  // A second slot joins the first one; a third begins anew, and so does a chosen one by going.
  const choose = (target) => {
    const at = chosen.findIndex(
      ({ rack, number }) => rack === target.rack && number === target.number);
    if (at >= 0) {
      chosen.splice(at, 1);
    } else {
      if (chosen.length === 2) chosen.length = 0;
      chosen.push(target);
    }
    markChosen();
  };

  const chooseNothing = () => {
    chosen.length = 0;
    markChosen();
    history.replaceState(null, "", location.pathname + location.search);
    say("");
  };

  // ---- Mouse and keyboard ----

  const main = document.querySelector("main");

  main.addEventListener("pointerover", (event) => {
    if (event.pointerType === "touch") return;
    const target = targetOf(event.target);
    if (target) show(target);
  });
  main.addEventListener("pointerout", (event) => {
    const leaves = !event.relatedTarget?.closest?.("svg.drawing");
    if (leaves && targetOf(event.target)) show(null);
  });
  main.addEventListener("click", (event) => {
    const target = targetOf(event.target);
    if (target?.kind === "slot") choose(target);
    else if (target) show(target);
  });
  main.addEventListener("focusin", (event) => {
    const target = targetOf(event.target);
    if (!target || !event.target.matches(":focus-visible")) return;
    moveTabStop(target.rack, event.target);
    show(target);
  });
  details.addEventListener("click", (event) => { if (event.target === close) chooseNothing(); });

  // One stop of the Tab key for each picture; arrows go on from there.
  const kSteps = "[data-key^=slot],[data-key^=bus],[data-key^=bridge],g.line";

  const moveTabStop = (rack, group) => {
    rack.picture.querySelector("[tabindex='0']")?.setAttribute("tabindex", "-1");
    group.setAttribute("tabindex", "0");
  };

  for (const rack of racks.values()) {
    rack.picture.setAttribute("role", "group");
    rack.picture.setAttribute("aria-labelledby", `title-${rack.number}`);
    rack.picture.querySelectorAll(kSteps).forEach((group, n) => {
      group.setAttribute("tabindex", n === 0 ? "0" : "-1");
      group.setAttribute("role", "button");
      group.setAttribute("aria-label", group.querySelector("title")?.textContent ?? "");
    });
    for (const item of rack.section.querySelectorAll("[data-about]")) {
      for (const key of item.dataset.about.split(" ")) {
        for (const group of rack.groups(key.replace("-", " "))) {
          group.classList.add(item.classList.contains("wrong") ? "wrong" : "doubtful");
        }
      }
    }
  }

  // Slots, buses, bridges and each star trigger are rows below each other.
  const rowsOf = (rack) => {
    const rows = new Map();
    for (const group of rack.picture.querySelectorAll(kSteps)) {
      const row = group.dataset.key.split(" ").slice(0, group.matches("g.line") ? 2 : 1).join(" ");
      if (!rows.has(row)) rows.set(row, []);
      rows.get(row).push(group);
    }
    const middle = (group) => {
      const box = group.getBoundingClientRect();
      return box.left + box.width / 2;
    };
    return [...rows.values()].map((row) => row.map((group) => ({ group, x: middle(group) }))
      .sort((a, b) => a.x - b.x));
  };

  const nearest = (row, x) => row.reduce((best, one) =>
    Math.abs(one.x - x) < Math.abs(best.x - x) ? one : best);

  // Where each key leads; to nothing at an end.
  const neighbours = (rack, group) => {
    const rows = rowsOf(rack);
    const y = rows.findIndex((each) => each.some((one) => one.group === group));
    const row = rows[y];
    const x = row.findIndex((one) => one.group === group);
    return {
      ArrowLeft: row[x - 1], ArrowRight: row[x + 1], Home: row[0], End: row[row.length - 1],
      ArrowUp: rows[y - 1] && nearest(rows[y - 1], row[x].x),
      ArrowDown: rows[y + 1] && nearest(rows[y + 1], row[x].x),
    };
  };

  main.addEventListener("keydown", (event) => {
    const target = targetOf(event.target);
    if (!target || event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "Enter" || event.key === " ") {
      if (target.kind === "slot") choose(target);
    } else {
      const moves = neighbours(target.rack, event.target.closest("[data-key]"));
      if (!(event.key in moves)) return;
      moves[event.key]?.group.focus();
    }
    event.preventDefault();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "Escape") chooseNothing();
    const isTyping = event.target.matches?.("input");
    if (event.key === "/" && !isTyping && !event.ctrlKey && !event.altKey && !event.metaKey) {
      byId("search").focus();
      event.preventDefault();
    }
  });

  // ---- Links that name a chassis or a slot: #1/7 ----

  const goTo = (place) => {
    const [, chassis, slot] = /^(\d+)(?:\/(\d+))?$/.exec(place) ?? [];
    const rack = racks.get(Number(chassis));
    if (!rack) return;
    rack.section.scrollIntoView({ block: "start" });
    if (slot === undefined) return;
    chosen.length = 0;
    chosen.push({ rack, kind: "slot", number: Number(slot) });
    markChosen();
    const group = rack.groups(`slot ${Number(slot)}`)[0];
    if (!group) return say(`There is no slot ${place}.`);
    moveTabStop(rack, group);
    group.focus({ preventScroll: true });
    group.scrollIntoView({ block: "nearest", inline: "center" });
  };
  const goToHash = () => goTo(decodeURIComponent(location.hash.slice(1)));
  window.addEventListener("hashchange", goToHash);

  // ---- The table of all modules ----

  const moduleTable = document.querySelector("#modules table");
  let modules = null;
  const moduleData = () => (modules ??= dataOf(byId("module-rows")));
  const compare = new Intl.Collator("en", { numeric: true }).compare;
  const order = { column: 0, direction: 1 };

  // Lists break behind a comma, and names nowhere unless they are long.
  const cellParts = (cell) => cell.split(/(?<=,)/).flatMap((part) =>
    [/^\S{1,40}$/.test(part) ? make("span", { class: "whole" }, part) : part, make("wbr")]);
  const moduleRow = ({ place, cells }) => make("tr", {}, ...cells.map((cell, n) => make("td", {},
    ...(n === 0 && place ? [make("a", { href: `#${place}` }, place)] : cellParts(cell)))));

  const fillTable = () => {
    if (moduleTable.tHead) return;
    const heads = moduleData().titles.map((title, column) => {
      const button = make("button", { type: "button" }, title);
      button.addEventListener("click", () => sortBy(column));
      return make("th", { scope: "col", "aria-sort": column === 0 ? "ascending" : "none" }, button);
    });
    moduleTable.append(make("thead", {}, make("tr", {}, ...heads)), make("tbody"));
    moduleTable.tBodies[0].append(...modules.rows.map(moduleRow));
  };

  function sortBy(column) {
    order.direction = order.column === column ? -order.direction : 1;
    order.column = column;
    // Rows without a text there come last in either direction.
    modules.rows.sort((a, b) => {
      const [left, right] = [a.cells[column], b.cells[column]];
      if (!left || !right) return Number(!left) - Number(!right);
      return order.direction * compare(left, right);
    });
    moduleTable.tBodies[0].replaceChildren(...modules.rows.map(moduleRow));
    moduleTable.querySelectorAll("th").forEach((head, n) => head.setAttribute("aria-sort",
      n !== column ? "none" : order.direction > 0 ? "ascending" : "descending"));
  }

  new IntersectionObserver((entries, observer) => {
    if (!entries.some((entry) => entry.isIntersecting)) return;
    fillTable();
    observer.disconnect();
  }, { rootMargin: "800px" }).observe(byId("modules"));
  window.addEventListener("beforeprint", fillTable);

  // Between tabulators, as spreadsheets take it.
  const tableText = () => {
    const line = (cells) => cells.map((cell) => cell.replace(/\s+/g, " ")).join("\t");
    const { titles, rows } = moduleData();
    return [line(titles), ...rows.map(({ cells }) => line(cells))].join("\n") + "\n";
  };

  const copyByHand = (text) => {
    const area = make("textarea", { class: "away" });
    area.value = text;
    document.body.append(area);
    area.select();
    const isDone = document.execCommand("copy");
    area.remove();
    return isDone;
  };

  byId("copy").addEventListener("click", async () => {
    const text = tableText();
    const isDone = await navigator.clipboard?.writeText(text).then(() => true, () => false);
    const button = byId("copy");
    button.textContent = isDone || copyByHand(text) ? "Copied" : "Can't copy here";
    say(button.textContent);
    setTimeout(() => { button.textContent = "Copy as text"; }, 2000);
  });

  // ---- The saved installation ----

  byId("take").addEventListener("click", () => {
    const text = byId("saved-installation").textContent;
    const saved = JSON.parse(text);
    const name = `${saved.host}-${saved.taken}`.replace(/[^A-Za-z0-9._-]+/g, "-") || "installation";
    const url = URL.createObjectURL(new Blob([text], { type: "application/json" }));
    make("a", { href: url, download: `${name}.json` }).click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
  });

  // ---- Search ----

  const kMostHits = 20;
  const [search, hits] = [byId("search"), byId("hits")];
  let index = null;
  const searchIndex = () => (index ??= moduleData().rows.map(({ place, cells, find }) => ({
    place, label: cells.slice(0, 5).filter(Boolean).join("  "), text: ` ${find.toLowerCase()}`,
  })));

  // "5.0.0" is no part of "15.0.0"; PCI domain 0000 in front counts for nothing.
  const fits = (text, word) => /^[\da-f:.]*[\da-f][:.][\da-f:.]*$/.test(word)
    ? text.includes(` ${word.replace(/^0000:(?=[\da-f]+:)/, "")}`) : text.includes(word);

  const closeHits = () => {
    hits.hidden = true;
    search.setAttribute("aria-expanded", "false");
    search.removeAttribute("aria-activedescendant");
  };

  const activate = (n) => {
    [...hits.children].forEach((hit, m) => hit.setAttribute("aria-selected", String(n === m)));
    if (hits.children[n]) search.setAttribute("aria-activedescendant", hits.children[n].id);
    hits.children[n]?.scrollIntoView({ block: "nearest" });
  };
  const active = () => [...hits.children].findIndex((hit) => hit.ariaSelected === "true");

  search.addEventListener("input", () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length === 0) return closeHits();
    const found = searchIndex().filter(({ text }) => words.every((word) => fits(text, word)));
    hits.replaceChildren(...found.slice(0, kMostHits).map(({ place, label }, n) =>
      make("li", { role: "option", id: `hit-${n}`, "data-place": place }, label)));
    if (found.length === 0) hits.append(make("li", { class: "none-fits" }, "Nothing fits."));
    if (found.length > kMostHits) {
      hits.append(make("li", { class: "none-fits" }, `And ${found.length - kMostHits} more.`));
    }
    hits.hidden = false;
    search.setAttribute("aria-expanded", "true");
    say(found.length === 1 ? "1 module fits." : `${found.length} modules fit.`);
    activate(0);
  });

  const take = (hit) => {
    if (!hit?.dataset.place) return;
    closeHits();
    history.pushState(null, "", `#${hit.dataset.place}`);
    goTo(hit.dataset.place);
  };

  search.addEventListener("keydown", (event) => {
    const count = hits.querySelectorAll("[data-place]").length;
    if (event.key === "Escape") closeHits();
    if (hits.hidden || count === 0) return;
    if (event.key === "ArrowDown") activate((active() + 1) % count);
    else if (event.key === "ArrowUp") activate((active() + count - 1) % count);
    else if (event.key === "Enter") take(hits.children[active()]);
    else return;
    event.preventDefault();
  });
  search.addEventListener("blur", closeHits);
  hits.addEventListener("pointerdown", (event) => {
    event.preventDefault();
    take(event.target.closest("li"));
  });

  goToHash();
})();
