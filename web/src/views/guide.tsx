import type { ComponentChildren } from "preact";
import { useEffect, useState } from "preact/hooks";
import { Dialog } from "../ui/dialog";

declare global {
  interface Window {
    /** What guide.js brings. */
    __guide?: string;
  }
}

const marks = /(\*\*[^*]+\*\*|\*[^*]+\*|`[^`]+`)/;

// Every other piece is a marked one.
function inline(text: string): ComponentChildren[] {
  return text.split(marks).map((piece, index) => {
    if (index % 2 === 0) return piece;
    if (piece.startsWith("**")) return <b>{piece.slice(2, -2)}</b>;
    return piece.startsWith("*") ? <i>{piece.slice(1, -1)}</i> : <code>{piece.slice(1, -1)}</code>;
  });
}

function Passage({ text }: { text: string }) {
  if (text.startsWith("## ")) return <h3>{text.slice(3)}</h3>;
  if (!text.startsWith("- ")) return <p>{inline(text)}</p>;
  return (
    <ul>
      {text.split("\n").map((line) => (
        <li key={line}>{inline(line.slice(2))}</li>
      ))}
    </ul>
  );
}

// The title is the dialogue's, and who has the page before them needs no pictures of it.
function passagesOf(guide: string): string[] {
  return guide.split(/\n{2,}/).filter((text) => !/^(# |!\[|$)/.test(text));
}

// A file of its own: the page opens as fast for whoever never asks for it.
function useGuide(): string {
  const [guide, setGuide] = useState(window.__guide ?? "");
  useEffect(() => {
    if (window.__guide !== undefined) return;
    const script = document.createElement("script");
    script.src = "guide.js";
    script.onload = script.onerror = () => setGuide(window.__guide ?? "Le guide n’a pas été trouvé.");
    document.head.append(script);
  }, []);
  return guide;
}

/** The user's guide as the documents have it, with what of Markdown it uses. */
export function Guide({ onClose }: { onClose: () => void }) {
  const guide = useGuide();
  return (
    <Dialog title="Guide d’Orvanta" onClose={onClose}>
      <div class="dialog-body prose guide">
        {passagesOf(guide).map((text) => (
          <Passage key={text} text={text.trim()} />
        ))}
      </div>
    </Dialog>
  );
}
