// Lights up one service; without it the page still shows everything.
"use strict";
(() => {
  const picture = document.querySelector(".multiplex");
  const tip = document.getElementById("tip");
  const heads = [...picture.querySelectorAll(".input[data-service] .head")];
  let chosen = null;
  document.documentElement.classList.add("scripted");

  const serviceOf = (element) => element.closest("[data-service]")?.dataset.service ?? null;

  const light = (service) => {
    chosen = service;
    picture.classList.toggle("choosing", service !== null);
    for (const part of picture.querySelectorAll(".part")) {
      const services = (part.dataset.s ?? "").split(" ");
      part.classList.toggle("lit", service !== null && services.includes(service));
    }
    for (const head of heads) {
      head.setAttribute("aria-pressed", String(serviceOf(head) === service));
    }
  };

  const toggle = (service) => light(service === chosen ? null : service);

  picture.addEventListener("click", (event) => {
    const service = serviceOf(event.target);
    if (service !== null) {
      toggle(service);
    }
  });

  picture.addEventListener("keydown", (event) => {
    const head = event.target.closest(".head");
    if (head !== null && (event.key === "Enter" || event.key === " ")) {
      event.preventDefault();
      toggle(serviceOf(head));
    }
  });

  document.addEventListener("keydown", (event) => {
    if (event.key === "Escape") {
      light(null);
      tip.hidden = true;
    }
  });

  // The pointer has the browser's own tool tip; the keyboard gets this one.
  for (const head of heads) {
    head.addEventListener("focus", () => {
      if (!head.matches(":focus-visible")) {
        return;
      }
      const place = head.getBoundingClientRect();
      tip.textContent = head.querySelector("title").textContent;
      tip.style.left = `${Math.max(8, place.left + window.scrollX)}px`;
      tip.style.top = `${place.bottom + window.scrollY + 6}px`;
      tip.hidden = false;
    });
    head.addEventListener("blur", () => {
      tip.hidden = true;
    });
  }
})();
