import { useEffect, useState } from "preact/hooks";
import { Icon } from "./icons";
import { Button } from "./parts";
import { useAttempt } from "./toast";

const seconds = 3;

/** A text to be taken somewhere else, and what puts it on the clipboard. */
export function Copyable({ text }: { text: string }) {
  const attempt = useAttempt();
  const [copied, setCopied] = useState(false);
  useEffect(() => {
    if (!copied) return;
    const timer = setTimeout(() => setCopied(false), seconds * 1000);
    return () => clearTimeout(timer);
  }, [copied]);
  const copy = async () => setCopied(await attempt(() => navigator.clipboard.writeText(text)));
  return (
    <div class="copyable">
      <p>
        <code>{text}</code>
      </p>
      <Button kind="small" aria-label={`Copier ${text}`} onClick={() => void copy()}>
        <Icon name={copied ? "check" : "copy"} />
        {copied ? "Copié" : "Copier"}
      </Button>
      <div class="sr-only" role="status">
        {copied && <p>Copié</p>}
      </div>
    </div>
  );
}
