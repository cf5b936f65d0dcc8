import { Button, IconButton } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useShortcuts } from "../../ui/shortcuts";
import type { Scale } from "./use_scale";

const step = 0.6;

interface Props {
  scale: Scale;
  onZoom: (factor: number) => void;
  onRange: () => void;
}

/** How much of the day the timeline shows, and a range on it without dragging. */
export function Zoom({ scale, onZoom, onRange }: Props) {
  const closer = () => onZoom(step);
  const farther = () => onZoom(1 / step);
  const fitted = () => scale.show(null);
  useShortcuts({ "+": closer, "=": closer, "-": farther, z: fitted });
  const bar = useRoving<HTMLDivElement>("row");
  return (
    <div class="zoom" role="toolbar" aria-label="Étendue de la chronologie" ref={bar}>
      <IconButton icon="minus" label="Réduire" title="Réduire (−)" onClick={farther} />
      <IconButton icon="plus" label="Agrandir" title="Agrandir (+)" onClick={closer} />
      <Button kind="ghost small" disabled={!scale.chosen} title="Voir toute l’activité (Z)" onClick={fitted}>
        Tout
      </Button>
      <Button kind="ghost small" onClick={() => scale.show(scale.day)}>
        24 h
      </Button>
      <Button kind="ghost small" onClick={onRange}>
        Plage…
      </Button>
    </div>
  );
}
